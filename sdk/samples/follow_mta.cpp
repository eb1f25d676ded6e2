// SPDX-License-Identifier: MIT
// follow_mta: what follow.cpp does, with the work on a thread of the program's. In the
// multithreaded apartment callbacks run on threads of the library's, at any time: they put down
// what they are told, under a lock, and return at once. One line builds it here:
//
//   x86_64-w64-mingw32-g++ -std=c++17 -static -I../include follow_mta.cpp -o follow_mta.exe -lole32
#include <kora4.hpp>

#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <optional>
#include <thread>

namespace {

// The latest profile, handed from one thread to another; without any, the end.
class Mailbox {
  public:
    void Put(std::optional<LONG> profile) {
        {
            const std::lock_guard<std::mutex> hold(m_mutex);
            m_profile = profile;
            m_isNew = true;
        }
        m_wake.notify_one();
    }
    std::optional<LONG> Take() {
        std::unique_lock<std::mutex> hold(m_mutex);
        m_wake.wait(hold, [this] { return m_isNew; });
        m_isNew = false;
        return m_profile;
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::optional<LONG> m_profile;
    bool m_isNew = false;
};

class Follower final : public kora4::Callback {
  public:
    explicit Follower(Mailbox& mailbox) : m_mailbox(mailbox) {}

  private:
    void OnProfile(LONG profile) override { m_mailbox.Put(profile); }

    Mailbox& m_mailbox;
};

int Complain(const kora4::Status& status) {
    std::fprintf(stderr, "follow_mta: %s\n", status.Text().c_str());
    return 1;
}

}  // namespace

int main() {
    const kora4::ApartmentGuard apartment(kora4::ApartmentKind::eMultithreaded);
    Mailbox mailbox;
    auto api = kora4::Api::Open();
    if (!api)
        return Complain(api);
    const auto follower = kora4::MakeCallback<Follower>(mailbox);
    if (const auto status = api->RegisterChangeNotifications(follower.Get()); !status)
        return Complain(status);
    const auto profile = api->GetActiveProfile();
    if (!profile)
        return Complain(profile);

    std::thread worker([&mailbox, first = *profile] {
        for (std::optional<LONG> next = first; next; next = mailbox.Take()) {
            std::printf("profile %ld\n", *next);
            std::fflush(stdout);
        }
    });
    std::getchar();
    // From here on no callback runs, so nothing comes after the end.
    const auto status = api->UnregisterChangeNotifications();
    mailbox.Put(std::nullopt);
    worker.join();
    return status ? 0 : Complain(status);
}
