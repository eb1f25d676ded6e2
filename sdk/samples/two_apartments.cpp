// SPDX-License-Identifier: MIT
// two_apartments: the object lives in the single-threaded apartment of one thread, and a second
// thread, in an apartment of its own, uses it and is called back through the proxies of the
// SDK. Both register the proxies: nothing in the registry leads there. One line builds it here:
//
//   x86_64-w64-mingw32-g++ -std=c++17 -static -I../include two_apartments.cpp -o two_apartments.exe -L../lib -lkora4_sdk_proxies -lkora4_sdk_guids -lrpcrt4 -lole32 -luuid
#include <kora4_proxies.h>
#include <kora4.hpp>

#include <cstdio>
#include <thread>

namespace {

// An apartment that knows the proxies, for the length of a scope.
class ApartmentWithProxies {
  public:
    explicit ApartmentWithProxies(kora4::ApartmentKind kind)
        : m_apartment(kind), m_status(Kora4RegisterProxies(&m_cookie)) {}
    ~ApartmentWithProxies() { Kora4RevokeProxies(m_cookie); }
    ApartmentWithProxies(const ApartmentWithProxies&) = delete;
    ApartmentWithProxies& operator=(const ApartmentWithProxies&) = delete;

    kora4::Status Status() const { return m_status; }

  private:
    kora4::ApartmentGuard m_apartment;
    DWORD m_cookie = 0;
    kora4::Status m_status;
};

void Show(LONG profile) {
    std::printf("profile %ld\n", profile);
    std::fflush(stdout);
}

class Follower final : public kora4::Callback {
    void OnProfile(LONG profile) override { Show(profile); }
};

int Complain(const kora4::Status& status) {
    std::fprintf(stderr, "two_apartments: %s\n", status.Text().c_str());
    return 1;
}

// What the second thread does with the interface that comes out of the stream.
int Follow(IStream* pStream) {
    const ApartmentWithProxies apartment(kora4::ApartmentKind::eMultithreaded);
    Microsoft::WRL::ComPtr<IVeltoKORA4API> carried;
    const HRESULT hr = CoGetInterfaceAndReleaseStream(
        pStream, __uuidof(IVeltoKORA4API), reinterpret_cast<void**>(carried.GetAddressOf()));
    if (FAILED(hr))
        return Complain(kora4::Status(hr));
    kora4::Api api(carried);
    const auto follower = kora4::MakeCallback<Follower>();
    if (const auto status = api.RegisterChangeNotifications(follower.Get()); !status)
        return Complain(status);
    const auto profile = api.GetActiveProfile();
    if (!profile)
        return Complain(profile);
    Show(*profile);
    std::getchar();
    const auto status = api.UnregisterChangeNotifications();
    return status ? 0 : Complain(status);
}

}  // namespace

int main() {
    const ApartmentWithProxies apartment(kora4::ApartmentKind::eSingleThreaded);
    if (!apartment.Status())
        return Complain(apartment.Status());
    auto api = kora4::Api::Open();
    if (!api)
        return Complain(api);
    IStream* pStream = nullptr;
    const kora4::Status marshalled(
        CoMarshalInterThreadInterfaceInStream(__uuidof(IVeltoKORA4API), api->Get(), &pStream));
    if (!marshalled)
        return Complain(marshalled);

    int result = 0;
    std::thread user([&, owner = GetCurrentThreadId()] {
        result = Follow(pStream);
        PostThreadMessageW(owner, WM_QUIT, 0, 0);
    });
    // Calls of the other apartment come in with the messages of this one.
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
        DispatchMessageW(&message);
    user.join();
    return result;
}
