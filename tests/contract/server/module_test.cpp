// SPDX-License-Identifier: MIT
// The module: class objects, the lock count, resources, entry-point trace, unloading.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <objbase.h>
#include <oleauto.h>
#include <veltokora4api.h>
#include <wrl/client.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "support/com_client.h"
#include "support/registry_fixture.h"
#include "support/trace_capture.h"

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;

class ModuleTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ResetStore();
        ASSERT_TRUE(m_library.IsLoaded());
    }

    ComPtr<IClassFactory> Factory() const {
        ComPtr<IClassFactory> factory;
        EXPECT_EQ(S_OK,
                  m_library.GetClassObject(CLSID_VeltoKORA4APITestCoclass, IID_IClassFactory,
                                           reinterpret_cast<void**>(factory.GetAddressOf())));
        return factory;
    }
    ComPtr<IVeltoKORA4API> Create() const {
        ComPtr<IVeltoKORA4API> api;
        EXPECT_EQ(S_OK,
                  Factory()->CreateInstance(nullptr, IID_IVeltoKORA4API,
                                            reinterpret_cast<void**>(api.GetAddressOf())));
        return api;
    }

    Apartment m_apartment{COINIT_MULTITHREADED};
    LoadedLibrary m_library;
};

// ---- Class objects ------------------------------------------------------------------------

TEST_F(ModuleTest, TheTestClassHasAClassObject) {
    for (const IID& iid : {IID_IClassFactory, IID_IUnknown}) {
        ComPtr<IUnknown> object;
        EXPECT_EQ(S_OK,
                  m_library.GetClassObject(CLSID_VeltoKORA4APITestCoclass, iid,
                                           reinterpret_cast<void**>(object.GetAddressOf())));
        EXPECT_TRUE(object);
    }
}

TEST_F(ModuleTest, OtherClassesAreNotAvailable) {
    for (const CLSID& clsid : {CLSID_VeltoKORA4APIAnalogCoclass, CLSID_VeltoKORA4APIHDMICoclass,
                               IID_IVeltoKORA4API, GUID{}}) {
        void* object = this;
        EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE,
                  m_library.GetClassObject(clsid, IID_IClassFactory, &object));
        EXPECT_EQ(nullptr, object);
    }
}

TEST_F(ModuleTest, AClassObjectHasNoOtherInterface) {
    void* object = this;
    EXPECT_EQ(E_NOINTERFACE, m_library.GetClassObject(CLSID_VeltoKORA4APITestCoclass,
                                                      IID_IVeltoKORA4API, &object));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(S_OK, m_library.CanUnloadNow());
}

TEST_F(ModuleTest, AClassObjectNeedsAPlaceToGo) {
    EXPECT_EQ(E_POINTER, m_library.GetClassObject(CLSID_VeltoKORA4APITestCoclass,
                                                  IID_IClassFactory, nullptr));
}

TEST_F(ModuleTest, TheFactoryCreatesTheApiObject) {
    EXPECT_TRUE(Create());
}

TEST_F(ModuleTest, TheFactoryRefusesAggregation) {
    const auto factory = Factory();
    void* object = this;
    EXPECT_EQ(CLASS_E_NOAGGREGATION,
              factory->CreateInstance(factory.Get(), IID_IUnknown, &object));
    EXPECT_EQ(nullptr, object);
}

TEST_F(ModuleTest, TheFactoryRefusesUnknownInterfaces) {
    void* object = this;
    EXPECT_EQ(E_NOINTERFACE, Factory()->CreateInstance(nullptr, IID_IClassFactory, &object));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(S_OK, m_library.CanUnloadNow());
}

TEST_F(ModuleTest, TheFactoryNeedsAPlaceForTheObject) {
    EXPECT_EQ(E_POINTER, Factory()->CreateInstance(nullptr, IID_IUnknown, nullptr));
}

// ---- The lock count -----------------------------------------------------------------------

TEST_F(ModuleTest, CanBeUnloadedWhileNothingIsInUse) {
    EXPECT_EQ(S_OK, m_library.CanUnloadNow());
}

TEST_F(ModuleTest, AnObjectKeepsItLoaded) {
    auto api = Create();
    EXPECT_EQ(S_FALSE, m_library.CanUnloadNow());
    api.Reset();
    EXPECT_EQ(S_OK, m_library.CanUnloadNow());
}

TEST_F(ModuleTest, AFactoryKeepsItLoaded) {
    auto factory = Factory();
    EXPECT_EQ(S_FALSE, m_library.CanUnloadNow());
    factory.Reset();
    EXPECT_EQ(S_OK, m_library.CanUnloadNow());
}

TEST_F(ModuleTest, EachServerLockKeepsItLoadedUntilItIsDropped) {
    EXPECT_EQ(S_OK, Factory()->LockServer(TRUE));
    EXPECT_EQ(S_OK, Factory()->LockServer(TRUE));
    EXPECT_EQ(S_FALSE, m_library.CanUnloadNow());
    EXPECT_EQ(S_OK, Factory()->LockServer(FALSE));
    EXPECT_EQ(S_FALSE, m_library.CanUnloadNow());
    EXPECT_EQ(S_OK, Factory()->LockServer(FALSE));
    EXPECT_EQ(S_OK, m_library.CanUnloadNow());
}

TEST_F(ModuleTest, AnInitialisedObjectAndItsMonitorKeepItLoadedUntilBothAreGone) {
    auto api = Create();
    ASSERT_EQ(S_OK, api->Initialize());
    EXPECT_EQ(S_FALSE, m_library.CanUnloadNow());
    api.Reset();
    EXPECT_TRUE(PumpUntil([this] { return m_library.CanUnloadNow() == S_OK; }, nullptr, 2000));
}

// ---- Resources ----------------------------------------------------------------------------

std::vector<std::string> ScriptTokens(HMODULE module, int id) {
    const HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(id), L"REGISTRY");
    if (!resource)
        return {"(no resource)"};
    const auto* const text =
        static_cast<const char*>(LockResource(LoadResource(module, resource)));
    std::istringstream stream(std::string(text, SizeofResource(module, resource)));
    std::vector<std::string> tokens;
    for (std::string token; stream >> token;)
        tokens.push_back(token);
    return tokens;
}

TEST_F(ModuleTest, CarriesTheScriptOfItsAppId) {
    EXPECT_EQ((std::vector<std::string>{"HKCR", "{", "NoRemove", "AppID", "{", "'%APPID%'", "=",
                                        "s", "'QXA64T'", "'QXA64T.DLL'", "{", "val", "AppID",
                                        "=", "s", "'%APPID%'", "}", "}", "}"}),
              ScriptTokens(m_library.Module(), 101));
}

TEST_F(ModuleTest, CarriesTheScriptOfItsClass) {
    EXPECT_EQ((std::vector<std::string>{"HKCR",
                                        "{",
                                        "NoRemove",
                                        "CLSID",
                                        "{",
                                        "ForceRemove",
                                        "{16CC6CDB-872A-4099-95B1-25BEBF71B0D9}",
                                        "=",
                                        "s",
                                        "'KORA4",
                                        "ASL",
                                        "Test",
                                        "COM",
                                        "Class'",
                                        "{",
                                        "InprocServer32",
                                        "=",
                                        "s",
                                        "'%MODULE%'",
                                        "{",
                                        "val",
                                        "ThreadingModel",
                                        "=",
                                        "s",
                                        "'Both'",
                                        "}",
                                        "}",
                                        "}",
                                        "}"}),
              ScriptTokens(m_library.Module(), 102));
}

TEST_F(ModuleTest, CarriesItsTypeLibraryAsResourceOne) {
    ComPtr<ITypeLib> typeLib;
    EXPECT_EQ(S_OK, LoadTypeLibEx((LibraryPath() + L"\\1").c_str(), REGKIND_NONE,
                                  typeLib.GetAddressOf()));
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(S_OK, typeLib->GetLibAttr(&attributes));
    EXPECT_EQ(attributes->guid, LIBID_KORA4ASLLib);
    typeLib->ReleaseTLibAttr(attributes);
}

class VersionResource : public ::testing::Test {
  protected:
    void SetUp() override {
        DWORD unused = 0;
        m_data.resize(GetFileVersionInfoSizeW(LibraryPath().c_str(), &unused));
        ASSERT_FALSE(m_data.empty());
        ASSERT_TRUE(GetFileVersionInfoW(LibraryPath().c_str(), 0,
                                        static_cast<DWORD>(m_data.size()), m_data.data()));
    }

    const void* Query(const std::wstring& block) {
        void* found = nullptr;
        UINT size = 0;
        return VerQueryValueW(m_data.data(), block.c_str(), &found, &size) ? found : nullptr;
    }
    std::wstring Text(const std::wstring& name) {
        const void* const found = Query(L"\\StringFileInfo\\040904B0\\" + name);
        return found ? static_cast<const wchar_t*>(found) : L"(none)";
    }

    std::vector<std::uint8_t> m_data;
};

TEST_F(VersionResource, SaysTheVersionInNumbers) {
    const auto* const info = static_cast<const VS_FIXEDFILEINFO*>(Query(L"\\"));
    ASSERT_NE(nullptr, info);
    EXPECT_EQ(MAKELONG(2, 7) + 0u, info->dwFileVersionMS);
    EXPECT_EQ(MAKELONG(4, 7000) + 0u, info->dwFileVersionLS);
    EXPECT_EQ(info->dwProductVersionMS, info->dwFileVersionMS);
    EXPECT_EQ(info->dwProductVersionLS, info->dwFileVersionLS);
}

TEST_F(VersionResource, SaysTheNamesInText) {
    EXPECT_EQ(L"7.2.7000.4", Text(L"FileVersion"));
    EXPECT_EQ(L"7.2.7000.4", Text(L"ProductVersion"));
    EXPECT_EQ(L"Velto", Text(L"CompanyName"));
    EXPECT_EQ(L"KORA4", Text(L"ProductName"));
    EXPECT_EQ(L"KORA4 ASL", Text(L"FileDescription"));
    EXPECT_EQ(L"QXA64T.dll", Text(L"OriginalFilename"));
}

// ---- Trace ----------------------------------------------------------------------------------

// As the C run-time of the library prints "%p".
std::string Pointer(const void* pointer) {
    char text[17];
    std::snprintf(text, sizeof(text), "%016llX",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(pointer)));
    return text;
}

class ModuleTrace : public ModuleTest {
  protected:
    void SetUp() override {
        ModuleTest::SetUp();
        WriteStoredUINT(eKeySetStatic, pkey::Setting(pkey::cTraceFlagsPid), 0x01000900);
        m_api = Create();
        ASSERT_EQ(S_OK, m_api->Initialize());
        m_log.Clear();
    }

    std::vector<TraceLine> Lines() const { return m_log.Read("KORA4ASLDLL"); }

    ComPtr<IVeltoKORA4API> m_api;
    TraceLog m_log;
};

TEST_F(ModuleTrace, ClassObjectRequestsTellTheBeginningsOfTheirGuids) {
    void* object = nullptr;
    m_library.GetClassObject(CLSID_VeltoKORA4APIHDMICoclass, IID_IClassFactory, &object);
    m_library.GetClassObject(CLSID_VeltoKORA4APITestCoclass, IID_IUnknown, nullptr);
    EXPECT_EQ((std::vector<std::string>{
                  ">> rclsid: 0xfbd78353, riid: 0x00000001 ppv: " + Pointer(&object),
                  "<< hr: 0x80040111 *ppv: " + Pointer(nullptr),
                  ">> rclsid: 0x16cc6cdb, riid: 0x00000000 ppv: " + Pointer(nullptr),
                  "<< hr: 0x80004003 *ppv: " + Pointer(nullptr)}),
              MessagesOf(Lines(), "DllGetClassObject"));
}

TEST_F(ModuleTrace, TheUnloadQuestionIsTracedWithItsAnswer) {
    m_library.CanUnloadNow();
    EXPECT_EQ((std::vector<std::string>{">>", "<< hr: 0x00000001"}),
              MessagesOf(Lines(), "DllCanUnloadNow"));
}

TEST_F(ModuleTrace, ThreadsAreTracedWhenTheyComeAndGo) {
    std::thread([] {}).join();
    const auto messages = MessagesOf(Lines(), "DllMain");
    const std::string attach = ">> dwReason: 0x00000002 lpReserved: " + Pointer(nullptr);
    const std::string detach = ">> dwReason: 0x00000003 lpReserved: " + Pointer(nullptr);
    // Other threads of the process may come and go meanwhile.
    EXPECT_THAT(messages,
                ::testing::IsSupersetOf({attach, detach, std::string("DLL_THREAD_ATTACH"),
                                         std::string("DLL_THREAD_DETACH")}));
    EXPECT_EQ(std::count(messages.begin(), messages.end(), "<<") * 3,
              static_cast<std::ptrdiff_t>(messages.size()));
}

// ---- Loading and unloading
// --------------------------------------------------------------------

TEST(ModuleUnload, TwoThousandCyclesLeaveNothingBehind) {
    constexpr int cWarmUp = 20;
    constexpr int cCycles = 2000;
    const Apartment apartment(COINIT_MULTITHREADED);
    ResetStore();
    const auto cycle = [] {
        const LoadedLibrary library;
        ComPtr<IClassFactory> factory;
        ASSERT_EQ(S_OK,
                  library.GetClassObject(CLSID_VeltoKORA4APITestCoclass, IID_IClassFactory,
                                         reinterpret_cast<void**>(factory.GetAddressOf())));
        ComPtr<IVeltoKORA4API> api;
        ASSERT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IVeltoKORA4API,
                                                reinterpret_cast<void**>(api.GetAddressOf())));
        api.Reset();
        factory.Reset();
        ASSERT_EQ(S_OK, library.CanUnloadNow());
    };
    const auto nextTlsIndex = [] {
        const DWORD index = TlsAlloc();
        TlsFree(index);
        return index;
    };
    // Handles are given out lowest first, so the next one tells how many are open.
    const auto nextHandle = [] {
        const UniqueHandle handle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        return reinterpret_cast<std::uintptr_t>(handle.Get());
    };
    for (int i = 0; i < cWarmUp; ++i)
        cycle();
    const DWORD tlsBefore = nextTlsIndex();
    const std::uintptr_t handleBefore = nextHandle();
    for (int i = 0; i < cCycles && !HasFatalFailure(); ++i)
        cycle();
    EXPECT_EQ(tlsBefore, nextTlsIndex());
    EXPECT_EQ(handleBefore, nextHandle());
    EXPECT_EQ(nullptr, GetModuleHandleW(L"QXA64T.dll"));
}

}  // namespace
}  // namespace kora4::test
