// SPDX-License-Identifier: MIT
// follow: shows the number of the active profile, and shows it again whenever somebody changes
// it, until Enter is pressed or the input ends. follow_raw.cpp and follow.c do the same without
// kora4.hpp. One line builds it here:
//
//   x86_64-w64-mingw32-g++ -std=c++17 -static -I../include follow.cpp -o follow.exe -lole32
#include <kora4.hpp>

#include <cstdio>

namespace {

class Follower final : public kora4::Callback {
    void OnProfile(LONG profile) override {
        std::printf("profile %ld\n", profile);
        std::fflush(stdout);
    }
};

int Complain(const kora4::Status& status) {
    std::fprintf(stderr, "follow: %s\n", status.Text().c_str());
    return 1;
}

}  // namespace

int main() {
    const kora4::ApartmentGuard apartment(kora4::ApartmentKind::eMultithreaded);
    auto api = kora4::Api::Open();
    if (!api)
        return Complain(api);
    const auto follower = kora4::MakeCallback<Follower>();
    if (const auto status = api->RegisterChangeNotifications(follower.Get()); !status)
        return Complain(status);
    const auto profile = api->GetActiveProfile();
    if (!profile)
        return Complain(profile);
    std::printf("profile %ld\n", *profile);
    std::fflush(stdout);
    std::getchar();
}
