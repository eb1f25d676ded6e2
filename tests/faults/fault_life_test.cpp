// SPDX-License-Identifier: MIT
// Each platform call fails in turn that an object's life, its start, a pass of its monitor and
// the registration of the library make.
#include <array>
#include <string_view>

#include "faults/fault_matrix.h"

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;
using Results = std::vector<HRESULT>;

// What Initialize may give besides success: its own, and those of COM, which it hands on.
const Results& InitializeFailures() {
    static const Results failures = {E_FAIL, E_OUTOFMEMORY, E_NOINTERFACE, REGDB_E_IIDNOTREG,
                                     CO_E_NOTINITIALIZED};
    return failures;
}

// The monitor's thread cannot wait, or cannot be told of changes, any more: the object works on
// without notifications.
bool EndsNotifications(const Fault& fault) {
    return fault.function == "RegNotifyChangeKeyValue" ||
           fault.function == "WaitForMultipleObjects";
}

class FaultsByApartment : public FaultMatrix, public testing::WithParamInterface<DWORD> {
  protected:
    FaultsByApartment() : FaultMatrix(GetParam()) {}

    // A client that is told of changes.
    void Begin() {
        m_spApi = Initialized();
        EXPECT_EQ(S_OK, m_spApi->RegisterChangeNotifications(&m_told));
        m_told.Forget();
    }
    void End() {
        if (m_spApi)
            m_spApi->UnregisterChangeNotifications();
        m_spApi.Reset();
        EXPECT_EQ(0, m_told.References());
    }

    Told m_told;
    ComPtr<IVeltoKORA4API> m_spApi;
};

std::string NameOfApartment(const testing::TestParamInfo<DWORD>& tested) {
    return tested.param == COINIT_MULTITHREADED ? "MTA" : "STA";
}
const auto cApartments = testing::Values(COINIT_APARTMENTTHREADED, COINIT_MULTITHREADED);

// ---- The life of an object -----------------------------------------------------------------

using FaultsOfLife = FaultsByApartment;

TEST_P(FaultsOfLife, LeaveNothingBehind) {
    Run({.name = "create, initialise, register, unregister, release",
         .prepare = [] {},
         .call =
             [&] {
                 const ComPtr<IVeltoKORA4API> spApi = m_library.Create();
                 if (!spApi)
                     return E_OUTOFMEMORY;
                 HRESULT hr = spApi->Initialize();
                 if (SUCCEEDED(hr))
                     hr = spApi->RegisterChangeNotifications(&m_told);
                 if (SUCCEEDED(hr))
                     hr = spApi->UnregisterChangeNotifications();
                 return hr;
             },
         .allowed = InitializeFailures(),
         .afterFault =
             [&](const Fault& fault, HRESULT) {
                 EXPECT_EQ(0, m_told.References());
                 // Without a wait for the thread it ends by itself, a little later.
                 const bool isLater = fault.function == "WaitForSingleObject";
                 EXPECT_TRUE(PumpUntil([&] { return m_library.CanUnloadNow() == S_OK; },
                                       nullptr, isLater ? cToldMilliseconds : 0));
             },
         .afterSuccess =
             [&] {
                 EXPECT_EQ(0, m_told.References());
                 EXPECT_EQ(S_OK, m_library.CanUnloadNow());
             }});
}

TEST_P(FaultsOfLife, InitializeCanBeTriedAgain) {
    Run({.name = "Initialize",
         .prepare = [&] { m_spApi = m_library.Create(); },
         .call = [&] { return m_spApi->Initialize(); },
         .allowed = InitializeFailures(),
         .afterFault =
             [&](const Fault& fault, HRESULT hr) {
                 EXPECT_EQ(S_OK, m_spApi->Initialize());
                 EXPECT_EQ(S_OK, m_spApi->RegisterChangeNotifications(&m_told));
                 if (FAILED(hr) || !EndsNotifications(fault))
                     ExpectToldOfTheNextChange(m_told);
                 ExpectUsable(*m_spApi.Get());
             },
         .end = [&] { End(); }});
}

// ---- Passes --------------------------------------------------------------------------------

class FaultsOfPasses : public FaultsByApartment {
  protected:
    // What another program changes in one step: with another profile, or within one.
    using Change = std::function<void()>;

    void ChangeEverything() {
        WaitForSingleObject(m_place.Mutex(), INFINITE);
        ++m_round;
        Put(m_place.enable, m_round % 2);
        Put(m_place.table, m_round);
        for (std::uint32_t t = ePresetNoTech + 1; t < eNumberKORA4PresetTechnologies; ++t) {
            const auto technology = static_cast<KORA4PresetTechnology>(t);
            Put(m_place.Patch(0, technology).flag, m_round % 2);
            Put(m_place.Trigger(technology), m_round);
        }
        ReleaseMutex(m_place.Mutex());
    }

    void RunPass(const char* name, const Change& change) {
        Run({.name = name,
             .prepare =
                 [this] {
                     Put(m_place.profile, 0);
                     Begin();
                 },
             .call =
                 [&] {
                     change();
                     m_told.Wait(cMaybeToldMilliseconds);
                     return S_OK;
                 },
             .afterFault =
                 [&](const Fault& fault, HRESULT) {
                     // What the fault has held up.
                     m_told.Wait(1);
                     if (!EndsNotifications(fault))
                         ExpectToldOfTheNextChange(m_told);
                     ExpectUsable(*m_spApi.Get());
                 },
             .afterSuccess =
                 [&] {
                     m_told.Wait(1);
                     ExpectToldOfTheNextChange(m_told);
                 },
             .end = [this] { End(); }});
    }

  private:
    std::uint32_t m_round = 10;
};

TEST_P(FaultsOfPasses, OfAnotherProfile) {
    RunPass("pass after a switch of the profile", [this] { SwitchProfile(); });
}

TEST_P(FaultsOfPasses, OfEverythingInAProfile) {
    RunPass("pass after a change of everything", [this] { ChangeEverything(); });
}

INSTANTIATE_TEST_SUITE_P(Apartments, FaultsOfLife, cApartments, NameOfApartment);
INSTANTIATE_TEST_SUITE_P(Apartments, FaultsOfPasses, cApartments, NameOfApartment);

// ---- Registration --------------------------------------------------------------------------

using FaultsOfRegistration = FaultMatrix;

TEST_F(FaultsOfRegistration, CanBeTriedAgain) {
    const auto doRegister = Find<HRESULT STDAPICALLTYPE()>("DllRegisterServer");
    const auto doUnregister = Find<HRESULT STDAPICALLTYPE()>("DllUnregisterServer");
    const Results failures = {E_FAIL, E_OUTOFMEMORY, TYPE_E_CANTLOADLIBRARY,
                              TYPE_E_REGISTRYACCESS};
    const auto isRegistered = [] {
        ComPtr<IVeltoKORA4API> spApi;
        return SUCCEEDED(CoCreateInstance(CLSID_VeltoKORA4APITestCoclass, nullptr,
                                          CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&spApi)));
    };
    Run({.name = "DllRegisterServer",
         .prepare = [] {},
         .call = doRegister,
         .allowed = failures,
         .afterFault = [&](const Fault&, HRESULT) { EXPECT_EQ(S_OK, doRegister()); },
         .afterSuccess = [&] { EXPECT_TRUE(isRegistered()); },
         .end = [&] { EXPECT_EQ(S_OK, doUnregister()); }});
    Run({.name = "DllRegisterServer again",
         .prepare = [] {},
         .call = doRegister,
         .allowed = failures,
         .afterSuccess = [&] { EXPECT_TRUE(isRegistered()); }});
    Run({.name = "DllUnregisterServer",
         .prepare = doRegister,
         .call = doUnregister,
         .allowed = failures,
         .afterFault =
             [&](const Fault&, HRESULT) {
                 // The type library may be gone already, which ends the second try.
                 EXPECT_EQ(S_OK, doRegister());
                 EXPECT_EQ(S_OK, doUnregister());
                 EXPECT_FALSE(isRegistered());
             },
         .afterSuccess = [&] { EXPECT_FALSE(isRegistered()); }});
}

}  // namespace
}  // namespace kora4::test
