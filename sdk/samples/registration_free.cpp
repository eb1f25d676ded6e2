// SPDX-License-Identifier: MIT
// registration_free: what follow.cpp does, with a library that is not registered. Its manifest,
// registration_free.manifest, names the assembly of the SDK, and COM finds the class and the
// proxies by that: here the object lives in the multithreaded apartment and is used from a
// single-threaded one. The settings must exist (docs/registration-free.md). QXA64T.dll,
// KORA4Proxies.dll and Velto.KORA4.manifest lie beside the program. One line builds it here:
//
//   x86_64-w64-mingw32-windres registration_free.rc registration_free.o && x86_64-w64-mingw32-g++ -std=c++17 -static -I../include registration_free.cpp registration_free.o -o registration_free.exe -lole32 && cp ../bin/QXA64T.dll ../bin/KORA4Proxies.dll ../bin/Velto.KORA4.manifest .
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
    std::fprintf(stderr, "registration_free: %s\n", status.Text().c_str());
    return 1;
}

// Makes the object in the multithreaded apartment, which lives until the program ends, and
// sends it home.
kora4::Status MakeElsewhere(IStream** ppStream) {
    CO_MTA_USAGE_COOKIE usage = nullptr;
    HRESULT hr = CoIncrementMTAUsage(&usage);
    std::thread([&] {
        const auto api = kora4::Api::Open();
        hr = api ? CoMarshalInterThreadInterfaceInStream(__uuidof(IVeltoKORA4API), api->Get(),
                                                         ppStream)
                 : api.Code();
    }).join();
    return kora4::Status(hr);
}

}  // namespace

int main() {
    const kora4::ApartmentGuard apartment(kora4::ApartmentKind::eSingleThreaded);
    IStream* pStream = nullptr;
    if (const auto status = MakeElsewhere(&pStream); !status)
        return Complain(status);
    Microsoft::WRL::ComPtr<IVeltoKORA4API> carried;
    const kora4::Status unmarshalled(CoGetInterfaceAndReleaseStream(
        pStream, __uuidof(IVeltoKORA4API), reinterpret_cast<void**>(carried.GetAddressOf())));
    if (!unmarshalled)
        return Complain(unmarshalled);
    kora4::Api api(carried);
    carried.Reset();
    const auto follower = kora4::MakeCallback<Follower>();
    if (const auto status = api.RegisterChangeNotifications(follower.Get()); !status)
        return Complain(status);
    const auto profile = api.GetActiveProfile();
    if (!profile)
        return Complain(profile);
    Show(*profile);

    std::thread([mainThread = GetCurrentThreadId()] {
        std::getchar();
        PostThreadMessageW(mainThread, WM_QUIT, 0, 0);
    }).detach();
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
        DispatchMessageW(&message);
    const auto status = api.UnregisterChangeNotifications();
    return status ? 0 : Complain(status);
}
