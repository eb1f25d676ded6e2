// SPDX-License-Identifier: MIT
// The type library against the contract, item by item. Reads the file named by the first
// argument: a .tlb, or a module that carries the library as its resource 1.
#include <gtest/gtest.h>
#include <oaidl.h>
#include <oleauto.h>
#include <windows.h>
#include <wrl/client.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "contract/typelib/type_text.h"
#include "kora4api.h"

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;

std::wstring g_path;

class TypeLibrary : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(S_OK, LoadTypeLibEx(g_path.c_str(), REGKIND_NONE, &m_library));
    }

    ComPtr<ITypeInfo> Info(const std::string& name) {
        ComPtr<ITypeInfo> info;
        for (UINT i = 0; i < m_library->GetTypeInfoCount(); ++i) {
            if (NameOf(m_library.Get(), static_cast<INT>(i)) == name)
                m_library->GetTypeInfo(i, &info);
        }
        EXPECT_TRUE(info) << name;
        return info;
    }

    ComPtr<ITypeLib> m_library;
};

TEST_F(TypeLibrary, HasItsIdentityVersionAndLocale) {
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(S_OK, m_library->GetLibAttr(&attributes));
    EXPECT_TRUE(IsEqualGUID(LIBID_KORA4ASLLib, attributes->guid));
    EXPECT_EQ(1, attributes->wMajorVerNum);
    EXPECT_EQ(0, attributes->wMinorVerNum);
    EXPECT_EQ(0x409u, attributes->lcid);
    m_library->ReleaseTLibAttr(attributes);
    EXPECT_EQ("KORA4ASLLib", NameOf(m_library.Get(), -1));
    EXPECT_EQ("KORA4 API Typelib", HelpOf(m_library.Get(), -1));
}

TEST_F(TypeLibrary, HasTheContractsTypesAndOneHelperForTheUnnamedUnion) {
    std::vector<std::string> names;
    for (UINT i = 0; i < m_library->GetTypeInfoCount(); ++i)
        names.push_back(NameOf(m_library.Get(), static_cast<INT>(i)));
    size_t unions = 0;
    std::erase_if(names, [&](const std::string& name) {
        const bool generated = name.find("veltokora4api") != std::string::npos;
        unions += generated;
        return generated;
    });
    std::sort(names.begin(), names.end());
    const std::vector<std::string> expected = {
        "GraphicEQData",
        "IVeltoKORA4API",
        "IVeltoKORA4APICallback",
        "KORA4APITechnology",
        "KORA4PatchValueUnion",
        "VeltoKORA4APIAnalogCoclass",
        "VeltoKORA4APIHDMICoclass",
        "VeltoKORA4APITestCoclass",
    };
    EXPECT_EQ(expected, names);
    EXPECT_EQ(1u, unions);
}

struct Coclass {
    const char* name;
    const CLSID& clsid;
    const char* help;
};
const Coclass cCoclasses[] = {
    {"VeltoKORA4APIAnalogCoclass", CLSID_VeltoKORA4APIAnalogCoclass,
     "KORA4 Velto API Analog COM Class"},
    {"VeltoKORA4APIHDMICoclass", CLSID_VeltoKORA4APIHDMICoclass,
     "KORA4 Velto API HDMI COM Class"},
    {"VeltoKORA4APITestCoclass", CLSID_VeltoKORA4APITestCoclass,
     "KORA4 Velto API Test COM Class"},
};

TEST_F(TypeLibrary, CoclassesAreCreatableWithTheApiAsTheirOneDefaultInterface) {
    for (const Coclass& coclass : cCoclasses) {
        const ComPtr<ITypeInfo> info = Info(coclass.name);
        ASSERT_TRUE(info);
        const TypeAttributes attributes(info.Get());
        EXPECT_EQ(TKIND_COCLASS, attributes->typekind) << coclass.name;
        EXPECT_TRUE(IsEqualGUID(coclass.clsid, attributes->guid)) << coclass.name;
        EXPECT_TRUE(attributes->wTypeFlags & TYPEFLAG_FCANCREATE) << coclass.name;
        EXPECT_EQ(coclass.help, HelpOf(info.Get(), MEMBERID_NIL));
        ASSERT_EQ(1, attributes->cImplTypes);
        INT flags = 0;
        EXPECT_EQ(S_OK, info->GetImplTypeFlags(0, &flags));
        EXPECT_EQ(IMPLTYPEFLAG_FDEFAULT, flags);
        HREFTYPE reference = 0;
        EXPECT_EQ(S_OK, info->GetRefTypeOfImplType(0, &reference));
        EXPECT_EQ("IVeltoKORA4API", NameOfReference(info.Get(), reference));
    }
}

// The identifiers to the letter: everything else takes them from the same definition file,
// so this is where a change of one shows.
TEST_F(TypeLibrary, IdentifiersAreThoseThatClientsHardCode) {
    EXPECT_EQ("{4D455D10-5B43-48E6-AE4E-308A29CFE9D1}", TextOf(LIBID_KORA4ASLLib));
    EXPECT_EQ("{23F52F2F-4FB0-4DDB-97DF-159CB756B797}", TextOf(IID_IVeltoKORA4API));
    EXPECT_EQ("{849BFE92-4CE8-4DA8-AD50-3CF6B9714494}", TextOf(IID_IVeltoKORA4APICallback));
    EXPECT_EQ("{B612768B-F11E-43EA-976C-1B226F8741FE}",
              TextOf(CLSID_VeltoKORA4APIAnalogCoclass));
    EXPECT_EQ("{FBD78353-8513-46F2-A5DA-7982B07320BF}", TextOf(CLSID_VeltoKORA4APIHDMICoclass));
    EXPECT_EQ("{16CC6CDB-872A-4099-95B1-25BEBF71B0D9}", TextOf(CLSID_VeltoKORA4APITestCoclass));
}

TEST_F(TypeLibrary, TechnologiesHaveTheirNumbers) {
    const ComPtr<ITypeInfo> info = Info("KORA4APITechnology");
    ASSERT_TRUE(info);
    EXPECT_EQ(TKIND_ENUM, TypeAttributes(info.Get())->typekind);
    const std::vector<std::string> expected = {
        "INT eVolumeLeveler = 0",
        "INT eGraphicEQ = 1",
        "INT eIntelligentEQ = 2",
        "INT eDialogEnhancer = 3",
        "INT eVirtualizerHP = 4",
        "INT eVirtualizerSpkr = 5",
        "INT eNumberKORA4APITechnologies = 6",
    };
    EXPECT_EQ(expected, Variables(info.Get()));
}

// Those of the types themselves are checked with the types.
TEST_F(TypeLibrary, EveryMethodAndEnumeratorHasItsHelpString) {
    std::size_t members = 0;
    for (const char* const name :
         {"IVeltoKORA4API", "IVeltoKORA4APICallback", "KORA4APITechnology"}) {
        const ComPtr<ITypeInfo> info = Info(name);
        ASSERT_TRUE(info);
        for (const MEMBERID member : Members(info.Get())) {
            const std::string help = HelpOf(info.Get(), member);
            EXPECT_LT(10u, help.size()) << name << " " << member << " " << help;
            EXPECT_NE('.', help.empty() ? '.' : help.back()) << help;
            ++members;
        }
    }
    EXPECT_EQ(30u + 6u + 7u, members);
}

TEST_F(TypeLibrary, HelpStringsBelongToTheirMembers) {
    const ComPtr<ITypeInfo> api = Info("IVeltoKORA4API");
    const std::vector<MEMBERID> methods = Members(api.Get());
    EXPECT_EQ("Gets the version of the library", HelpOf(api.Get(), methods.front()));
    EXPECT_EQ("Gets the graphic equalizer of the active profile",
              HelpOf(api.Get(), methods.back()));
    const ComPtr<ITypeInfo> technologies = Info("KORA4APITechnology");
    const std::vector<MEMBERID> enumerators = Members(technologies.Get());
    EXPECT_EQ("Volume leveler: an amount, 0 to 10",
              HelpOf(technologies.Get(), enumerators.front()));
    EXPECT_EQ("The number of technologies; not a technology",
              HelpOf(technologies.Get(), enumerators.back()));
}

TEST_F(TypeLibrary, RecordsHaveTheirSizesAndPlaces) {
    const ComPtr<ITypeInfo> value = Info("KORA4PatchValueUnion");
    ASSERT_TRUE(value);
    EXPECT_EQ(TKIND_RECORD, TypeAttributes(value.Get())->typekind);
    EXPECT_EQ(8u, TypeAttributes(value.Get())->cbSizeInstance);
    EXPECT_EQ(4, TypeAttributes(value.Get())->cbAlignment);
    const std::vector<std::string> valueFields = Variables(value.Get());
    ASSERT_EQ(2u, valueFields.size());
    EXPECT_EQ("0 KORA4APITechnology m_technology", valueFields[0]);
    EXPECT_TRUE(valueFields[1].starts_with("4 ")) << valueFields[1];
    EXPECT_TRUE(valueFields[1].ends_with(" m_values")) << valueFields[1];

    const ComPtr<ITypeInfo> members =
        Info(valueFields[1].substr(2, valueFields[1].size() - 11));
    ASSERT_TRUE(members);
    EXPECT_EQ(TKIND_UNION, TypeAttributes(members.Get())->typekind);
    EXPECT_EQ(4u, TypeAttributes(members.Get())->cbSizeInstance);
    const std::vector<std::string> expectedMembers = {
        "0 UI4 m_volumeSlider",
        "0 R4 m_enhancementSlider",
        "0 R4 m_headphoneVirtualizerSlider",
        "0 R4 m_speakerVirtualizerSlider",
        "0 UI4 m_dynamicEQPatchIndex",
    };
    EXPECT_EQ(expectedMembers, Variables(members.Get()));

    const ComPtr<ITypeInfo> eq = Info("GraphicEQData");
    ASSERT_TRUE(eq);
    EXPECT_EQ(TKIND_RECORD, TypeAttributes(eq.Get())->typekind);
    EXPECT_EQ(324u, TypeAttributes(eq.Get())->cbSizeInstance);
    EXPECT_EQ(4, TypeAttributes(eq.Get())->cbAlignment);
    const std::vector<std::string> expectedFields = {
        "0 UI4 m_bands",
        "4 R4[40] m_freq",
        "164 R4[40] m_gain",
    };
    EXPECT_EQ(expectedFields, Variables(eq.Get()));
}

void ExpectPlainComInterface(ITypeInfo* info, const IID& iid, const char* help) {
    const TypeAttributes attributes(info);
    EXPECT_EQ(TKIND_INTERFACE, attributes->typekind);
    EXPECT_TRUE(IsEqualGUID(iid, attributes->guid));
    EXPECT_EQ(0, attributes->wTypeFlags & (TYPEFLAG_FDUAL | TYPEFLAG_FOLEAUTOMATION));
    EXPECT_EQ(help, HelpOf(info, MEMBERID_NIL));
    ASSERT_EQ(1, attributes->cImplTypes);
    HREFTYPE reference = 0;
    EXPECT_EQ(S_OK, info->GetRefTypeOfImplType(0, &reference));
    EXPECT_EQ("IUnknown", NameOfReference(info, reference));
}

TEST_F(TypeLibrary, ApiHasItsThirtyThreeSlots) {
    const ComPtr<ITypeInfo> info = Info("IVeltoKORA4API");
    ASSERT_TRUE(info);
    ExpectPlainComInterface(info.Get(), IID_IVeltoKORA4API, "Velto KORA4 API COM Interface");
    EXPECT_EQ(33 * sizeof(void*), TypeAttributes(info.Get())->cbSizeVft);
    const std::vector<std::string> expected = {
        "3 GetVeltoKORA4Version(out UI4* kora4Version_3, out UI4* kora4Version_2, "
        "out UI4* kora4Version_1, out UI4* kora4Version_0)",
        "4 Initialize()",
        "5 RegisterChangeNotifications(in IVeltoKORA4APICallback* pIAPICallback)",
        "6 UnregisterChangeNotifications()",
        "7 GetActiveProfile(out I4* pProfileID)",
        "8 SetActiveProfile(in I4 profileID)",
        "9 RevertActiveProfile()",
        "10 SetDemoProfileAndEnable(in I4 demoProfileID, in I4 demoVeltoEnable)",
        "11 RevertFromDemoMode()",
        "12 ForceRevertFromDemoMode()",
        "13 GetVisualizationSamplingPeriod(out UI4* pSamplingPeriod)",
        "14 SetVisualizationSamplingPeriod(in UI4 samplingPeriod)",
        "15 GetVisualizationData(in out R4[20] pGain, in out R4[20] pExcitation)",
        "16 GetVeltoProfileEditorCommand(out LPWSTR* ppwVeltoProfileEditorCommand)",
        "17 GetVeltoProfileSelectorCommand(out LPWSTR* ppwVeltoProfileSelectorCommand)",
        "18 GetVeltoDemoAppCommand(out LPWSTR* ppwVeltoDemoAppCommand)",
        "19 GetVeltoEnable(out I4* pVeltoEnable)",
        "20 SetVeltoEnable(in I4 VeltoEnable)",
        "21 ToggleVeltoEnable(out I4* pVeltoEnable)",
        "22 GetProfileTable(in out LPWSTR[9] pwProfileNames)",
        "23 SetCustomProfileName(in I4 customProfileID, in LPWSTR pwCustomProfileName)",
        "24 CreateCustomProfile(in I4 customProfileID, in LPWSTR pwName)",
        "25 DeleteCustomProfile(in I4 customProfileID)",
        "26 GetTechnologyMasterEnables(out UI4* pdwMasterEnables)",
        "27 GetTechnologyOnElseOff(in KORA4APITechnology technology, out I4* pOnElseOff)",
        "28 SetTechnologyOnElseOff(in KORA4APITechnology technology, in I4 onElseOff)",
        "29 GetSimplePatchValue(in out KORA4PatchValueUnion* pGetPatchValue)",
        "30 SetSimplePatchValue(in KORA4PatchValueUnion* pSetPatchValue)",
        "31 SetGraphicEQData(in GraphicEQData* pGraphicEQData)",
        "32 GetGraphicEQData(in out GraphicEQData* pGraphicEQData)",
    };
    EXPECT_EQ(expected, Methods(info.Get()));
}

TEST_F(TypeLibrary, CallbackHasItsNineSlots) {
    const ComPtr<ITypeInfo> info = Info("IVeltoKORA4APICallback");
    ASSERT_TRUE(info);
    ExpectPlainComInterface(info.Get(), IID_IVeltoKORA4APICallback,
                            "Velto KORA4 API Callback COM Interface");
    EXPECT_EQ(9 * sizeof(void*), TypeAttributes(info.Get())->cbSizeVft);
    const std::vector<std::string> expected = {
        "3 OnActiveProfileChange(in I4 profileID)",
        "4 OnEnableStateChange(in I4 onElseOff)",
        "5 OnCustomProfileTableChange()",
        "6 OnTechnologyOnElseOffChange(in KORA4APITechnology technology, in I4 onElseOff)",
        "7 OnSimplePatchValueChange(in KORA4PatchValueUnion* pPatchValue)",
        "8 OnGraphicEQChange(in GraphicEQData* pGraphicData)",
    };
    EXPECT_EQ(expected, Methods(info.Get()));
}

}  // namespace
}  // namespace kora4::test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: typelib_test FILE: a type library or a module with one\n");
        return 2;
    }
    wchar_t path[MAX_PATH] = L"";
    MultiByteToWideChar(CP_ACP, 0, argv[1], -1, path, MAX_PATH);
    kora4::test::g_path = path;
    return RUN_ALL_TESTS();
}
