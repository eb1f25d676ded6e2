// SPDX-License-Identifier: MIT
// follow_sta: what follow.cpp does, in a single-threaded apartment, as programs with windows
// do: the callback runs on this thread whenever it takes its messages, so nothing needs a lock.
// One line builds it here:
//
//   x86_64-w64-mingw32-g++ -std=c++17 -static -I../include follow_sta.cpp -o follow_sta.exe -lole32
#include <kora4.hpp>

#include <cstdio>
#include <thread>

namespace {

void Show(LONG profile) {
    std::printf("profile %ld\n", profile);
    std::fflush(stdout);
}

class Follower final : public kora4::Callback {
    void OnProfile(LONG profile) override { Show(profile); }
};

int Complain(const kora4::Status& status) {
    std::fprintf(stderr, "follow_sta: %s\n", status.Text().c_str());
    return 1;
}

}  // namespace

int main() {
    const kora4::ApartmentGuard apartment(kora4::ApartmentKind::eSingleThreaded);
    auto api = kora4::Api::Open();
    if (!api)
        return Complain(api);
    const auto follower = kora4::MakeCallback<Follower>();
    if (const auto status = api->RegisterChangeNotifications(follower.Get()); !status)
        return Complain(status);
    const auto profile = api->GetActiveProfile();
    if (!profile)
        return Complain(profile);
    Show(*profile);

    // Waiting for Enter would keep the callbacks out: another thread does that.
    const DWORD mainThread = GetCurrentThreadId();
    std::thread([mainThread] {
        std::getchar();
        PostThreadMessageW(mainThread, WM_QUIT, 0, 0);
    }).detach();
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);  // callbacks run in here
    }
    return 0;
}
