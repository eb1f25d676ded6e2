// SPDX-License-Identifier: MIT
// The keys that docs/deployment-without-the-registrar.md tells an installer to write are
// enough, and the same that registering writes.
#include <gtest/gtest.h>
#include <objbase.h>
#include <windows.h>
#include <wrl/client.h>

#include <filesystem>
#include <string>

#include "checks/documents_markdown.h"
#include "kora4api.h"
#include "support/com_client.h"
#include "support/key_security.h"
#include "support/registry_fixture.h"

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;

constexpr wchar_t cClass[] = L"CLSID\\{16CC6CDB-872A-4099-95B1-25BEBF71B0D9}";
constexpr wchar_t cAppId[] = L"AppID\\{D4086C01-F20F-480F-A293-938122C6452B}";
constexpr wchar_t cAppIdOfLibrary[] = L"AppID\\QXA64T.DLL";
constexpr wchar_t cTypeLib[] = L"TypeLib\\{4D455D10-5B43-48E6-AE4E-308A29CFE9D1}";

std::wstring Wide(const std::string& ascii) {
    return std::wstring(ascii.begin(), ascii.end());
}

class Deployment : public ::testing::Test {
  protected:
    void SetUp() override {
        Clean();
        ASSERT_TRUE(m_library.IsLoaded());
        m_page = ParseDocument(ReadProjectFile("docs/deployment-without-the-registrar.md"));
    }
    void TearDown() override { Clean(); }

    static void Clean() {
        for (const wchar_t* const path : {cClass, cAppId, cAppIdOfLibrary, cTypeLib})
            RemoveKey(HKEY_CLASSES_ROOT, path);
        RemoveStore();
    }

    const std::vector<Row>& Rows(const char* mark) {
        const MarkedTable* const pTable = m_page.Find(mark);
        EXPECT_TRUE(pTable) << mark;
        static const std::vector<Row> cNone;
        return pTable ? pTable->rows : cNone;
    }

    // What an installer does with the two tables.
    void Deploy() {
        const std::wstring path = LibraryPath();
        const std::wstring folder = std::filesystem::path(path).parent_path().wstring();
        for (const Row& row : Rows("installer values")) {
            const std::wstring data = row[2] == "PATH"     ? path
                                      : row[2] == "FOLDER" ? folder
                                                           : Wide(row[2]);
            const std::wstring key = L"SOFTWARE\\Classes\\" + Wide(row[0]);
            CreateKey(HKEY_LOCAL_MACHINE, key);
            WriteValue(HKEY_LOCAL_MACHINE, key, Wide(row[1]).c_str(), REG_SZ, data.c_str(),
                       static_cast<DWORD>((data.size() + 1) * sizeof(wchar_t)));
        }
        for (const Row& row : Rows("installer keys")) {
            CreateKey(HKEY_LOCAL_MACHINE, Wide(row[0]));
            SetDacl(Wide(row[0]), Wide(row[1]).c_str());
        }
    }

    // All that a registration writes to the classes, as text.
    static std::string Registration() {
        std::string text;
        for (const wchar_t* const path : {cClass, cAppId, cAppIdOfLibrary, cTypeLib})
            text += DumpKey(HKEY_CLASSES_ROOT, path);
        // Wine 8 also writes the flag that a loaded library has a file (LIBFLAG_FHASDISKIMAGE);
        // Windows writes those of the library alone.
        constexpr char cOnWine[] = "FLAGS]\n REG_SZ 8\n";
        if (const std::size_t at = text.find(cOnWine); at != std::string::npos)
            text.replace(at, sizeof cOnWine - 1, "FLAGS]\n REG_SZ 0\n");
        return text;
    }

    Apartment m_apartment{COINIT_MULTITHREADED};
    LoadedLibrary m_library;
    Document m_page;
};

TEST_F(Deployment, ByTheDocumentMakesTheLibraryUsable) {
    Deploy();
    ComPtr<IVeltoKORA4API> api;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_VeltoKORA4APITestCoclass, nullptr,
                                     CLSCTX_INPROC_SERVER, IID_IVeltoKORA4API,
                                     reinterpret_cast<void**>(api.GetAddressOf())));
    EXPECT_EQ(S_OK, api->Initialize());
    EXPECT_EQ(S_OK, api->SetActiveProfile(KORA4_PROFILE_MUSIC));
}

TEST_F(Deployment, ByTheDocumentIsWhatRegisteringWrites) {
    Deploy();
    const std::string deployed = Registration();
    std::vector<std::wstring> lists;
    for (const Row& row : Rows("installer keys"))
        lists.push_back(DaclOf(Wide(row[0])));
    Clean();
    ASSERT_EQ(S_OK, m_library.RegisterServer());
    EXPECT_EQ(Registration(), deployed);
    // The last one is that of the companion applications, which registering leaves out.
    ASSERT_EQ(4u, lists.size());
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(DaclOf(Wide(Rows("installer keys")[i][0])), lists[i]);
    EXPECT_NE(cWorldAccess, lists[3]);
}

}  // namespace
}  // namespace kora4::test
