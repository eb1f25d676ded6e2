// SPDX-License-Identifier: MIT
// The fixture of the slot tests: an owner in a single-threaded apartment and a user in
// another apartment, single-threaded or multithreaded.
#ifndef KORA4_TESTS_CONTRACT_PROXY_BORDER_H
#define KORA4_TESTS_CONTRACT_PROXY_BORDER_H

#include <gtest/gtest.h>

#include "contract/proxy/apartment.h"
#include "contract/proxy/recorder.h"
#include "contract/proxy/registration.h"

namespace kora4::test {

// Failures that the proxies raise before anything is sent.
inline constexpr HRESULT cBadDiscriminant = static_cast<HRESULT>(0x800706C5);
inline constexpr HRESULT cEnumTooLarge = static_cast<HRESULT>(0x800706F5);
inline constexpr HRESULT cNullReference = static_cast<HRESULT>(0x800706F4);

// A thread in an apartment with the proxies registered.
class ProxyApartment {
  public:
    explicit ProxyApartment(ApartmentKind kind)
        : m_apartment(
              kind, [this] { m_cookie = EnterProxies(); }, [this] { LeaveProxies(m_cookie); }) {
    }
    Apartment& operator*() { return m_apartment; }
    Apartment* operator->() { return &m_apartment; }

  private:
    DWORD m_cookie = 0;
    Apartment m_apartment;
};

// The apartments that all tests share. Each apartment that something is marshalled out of
// takes one of the 64 places that this platform's RPC server has in the life of a process.
struct SharedApartments {
    ProxyApartment owner{ApartmentKind::Single};
    ProxyApartment single{ApartmentKind::Single};
    ProxyApartment multi{ApartmentKind::Multi};
};
SharedApartments& Apartments();

// An object of one apartment, and a user of it in another.
template <typename Object, typename Interface>
class Border : public testing::TestWithParam<ApartmentKind> {
  protected:
    void SetUp() override {
        m_owner.Run([this] { m_object = new Object; });
        m_carried = Carry<Interface>(m_owner, m_user, m_object.Get());
        ASSERT_TRUE(m_carried);
        ASSERT_NE(static_cast<Interface*>(m_object.Get()), m_carried.Get());
    }
    void TearDown() override {
        m_user.Run([this] { m_carried.Reset(); });
        m_owner.Run([this] {
            // The proxy has given back all that it held.
            m_object->AddRef();
            EXPECT_EQ(1u, m_object->Release());
            m_object.Reset();
        });
    }

    // Calls through the proxy, on the user's thread.
    template <typename Work>
    HRESULT Through(Work work) {
        HRESULT hr = E_UNEXPECTED;
        m_user.Run([&] { hr = work(m_carried.Get()); });
        return hr;
    }

    std::string Log() { return m_object->TakeLog(); }

    Apartment& m_owner = *Apartments().owner;
    Apartment& m_user =
        GetParam() == ApartmentKind::Single ? *Apartments().single : *Apartments().multi;
    Microsoft::WRL::ComPtr<Object> m_object;
    Microsoft::WRL::ComPtr<Interface> m_carried;
};

inline std::string UserName(const testing::TestParamInfo<ApartmentKind>& info) {
    return info.param == ApartmentKind::Single ? "FromStaToSta" : "FromMtaToSta";
}

}  // namespace kora4::test

#define KORA4_BOTH_BORDERS(fixture)                                               \
    INSTANTIATE_TEST_SUITE_P(Border, fixture,                                     \
                             testing::Values(kora4::test::ApartmentKind::Multi,   \
                                             kora4::test::ApartmentKind::Single), \
                             kora4::test::UserName)

#endif  // KORA4_TESTS_CONTRACT_PROXY_BORDER_H
