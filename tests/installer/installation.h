// SPDX-License-Identifier: MIT
// A machine on which the installers run: this program's Wine prefix.
#ifndef KORA4_TESTS_INSTALLER_INSTALLATION_H
#define KORA4_TESTS_INSTALLER_INSTALLATION_H

#include <gtest/gtest.h>
#include <windows.h>
#include <kora4.hpp>

#include <filesystem>
#include <map>
#include <string>

namespace kora4::test {

inline constexpr wchar_t cFolder[] = L"C:\\Program Files\\Velto\\KORA4";
inline constexpr wchar_t cLibrary[] = L"C:\\Program Files\\Velto\\KORA4\\bin\\QXA64T.dll";
inline constexpr wchar_t cProduct[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Velto KORA4 ASL";

// The version that is packed, and the one before it that the test has made.
inline constexpr wchar_t cNew[] = L"7.2.7000.4";
inline constexpr wchar_t cOld[] = L"7.2.7000.3";

// What docs/deployment.md promises.
inline constexpr DWORD cInstalled = 0;
inline constexpr DWORD cNotAdmin = 740;
inline constexpr DWORD cOldSystem = 1150;
inline constexpr DWORD cFailed = 1603;
inline constexpr DWORD cNotInstalled = 1605;
inline constexpr DWORD cBusy = 1618;
inline constexpr DWORD cNoLog = 1622;
inline constexpr DWORD cHalfWay = 1627;
inline constexpr DWORD cOtherProduct = 1638;
inline constexpr DWORD cCommandLine = 1639;
inline constexpr DWORD cRestart = 3010;

// How a program ended, and what it left in its log.
struct Outcome {
    DWORD code;
    std::string log;

    bool Says(const std::string& text) const { return log.find(text) != std::string::npos; }
};
std::ostream& operator<<(std::ostream& stream, const Outcome& run);

// Runs a command line to its end. `token` null: as this process.
Outcome RunToEnd(const std::wstring& commandLine, const std::filesystem::path& log,
                 HANDLE token = nullptr);

std::filesystem::path Installer(const std::wstring& name);
// The setup of a version, and its removal, silently; and their log.
std::filesystem::path LogPath();
Outcome RunSetup(const std::wstring& version, const std::wstring& arguments = {},
                 HANDLE token = nullptr);
Outcome RunRemoval(const std::wstring& arguments = {});
Outcome RunMsi(const std::wstring& arguments);

// The files below a folder, by their paths, with their bytes. None when it does not exist.
using Files = std::map<std::wstring, std::string>;
Files FilesOf(const std::filesystem::path& folder = cFolder);
std::string BytesOf(const std::filesystem::path& file);
// Of the library, in whatever folder of the installation.
std::ptrdiff_t LibraryCount();

// What kora4ctl of the installation prints; the test fails unless it ends with that code.
std::string Ctl(const std::wstring& arguments, DWORD code = 0);

// Everything of the class, the application and the type library.
std::string Registration();

// A client of the registered library, as a program keeps one.
class Client {
  public:
    Client() : m_api(*Api::Open()) {}
    Api* operator->() { return &m_api; }

  private:
    ApartmentGuard m_apartment{ApartmentKind::eMultithreaded};
    Api m_api;
};

// Nothing is installed, registered or stored when a test begins, and when it has ended.
class Installation : public testing::Test {
  protected:
    void SetUp() override { Clean(); }
    void TearDown() override { Clean(); }

  private:
    static void Clean();
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_INSTALLER_INSTALLATION_H
