// SPDX-License-Identifier: MIT
// The settings store as another program sees it: registry keys and value names, nothing of
// the library. Used to prepare a test, to look at what the library stored, and to change
// settings behind its back.
#ifndef KORA4_TESTS_SUPPORT_RAW_STORE_H
#define KORA4_TESTS_SUPPORT_RAW_STORE_H

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/handles.h"

namespace kora4::test {

// The last part of a technology's property keys.
enum class RawTechnology : std::uint32_t {
    eVolume = 0,
    eStandardEQ = 1,
    eDynamicEQ = 2,
    eEnhancement = 3,
    eHeadphone = 4,
    eVirtualSurround = 5,
    eNGSurround = 6,
};

// Value names.
std::wstring SettingName(std::uint32_t pid);
std::wstring MasterEnablesName();
std::wstring PatchName(RawTechnology technology, std::uint32_t profile, std::uint32_t pid);
std::wstring TriggerName(RawTechnology technology);
// `offset`: the last part of a global technology's property keys (0 optimizer, 1 regulator,
// 2 peak limiter).
std::wstring GlobalPatchName(std::uint32_t offset, std::uint32_t pid);
std::wstring GlobalTriggerName(std::uint32_t offset);
std::wstring ProfileNameName(std::uint32_t profile);

// Profile numbers: 0 to 2 are Movie, Music and Games, and each has a demo.
inline constexpr std::uint32_t cFirstCustom = 3;
inline constexpr std::uint32_t cProfileBound = 9;  // of those that can be selected
inline constexpr std::uint32_t cDemoMovie = 240;
inline constexpr std::uint32_t cDemoMusic = 241;
inline constexpr std::uint32_t cDemoGames = 242;

constexpr bool IsPreset(std::uint32_t profile) {
    return profile < cFirstCustom;
}
constexpr bool IsCustom(std::uint32_t profile) {
    return profile >= cFirstCustom && profile < cProfileBound;
}
constexpr bool IsSelectable(std::uint32_t profile) {
    return profile < cProfileBound;
}
constexpr bool IsDemo(std::uint32_t profile) {
    return profile >= cDemoMovie && profile <= cDemoGames;
}

// The volume of Movie, unless one is stored: more than a client may set.
inline constexpr std::uint32_t cMovieVolume = 262151;

// What the store holds of one text, in bytes, and of one array, in elements.
inline constexpr std::size_t cLongestText = 4096;
inline constexpr std::size_t cMostElements = 40;

// Property ids of SettingName.
inline constexpr std::uint32_t cEnablePid = 1;
inline constexpr std::uint32_t cProfilePid = 2;
inline constexpr std::uint32_t cPeriodPid = 3;
inline constexpr std::uint32_t cBlobPid = 4;
inline constexpr std::uint32_t cTablePid = 5;
inline constexpr std::uint32_t cTraceWordPid = 404;

// Creates the three keys empty, and deletes them at the end.
class RawStore {
  public:
    RawStore();
    ~RawStore();
    RawStore(const RawStore&) = delete;
    RawStore& operator=(const RawStore&) = delete;

    static void DeleteKeys();
    static void CreateKeys();
    static bool KeyExists(const wchar_t* key);

    // `key` is L"StaticKeys", L"DynamicKeys" or L"AppKeys".
    static void SetNumber(const wchar_t* key, const std::wstring& name, DWORD value);
    static void SetText(const wchar_t* key, const std::wstring& name, const std::wstring& text);
    static void SetBytes(const wchar_t* key, const std::wstring& name,
                         const std::vector<std::uint8_t>& bytes);
    static std::optional<DWORD> Number(const wchar_t* key, const std::wstring& name);
    static std::optional<std::wstring> Text(const wchar_t* key, const std::wstring& name);
    static DWORD Count(const wchar_t* key);  // of its values, 0 without the key

    // Number plus one, as writers announce a change of values.
    static void Bump(const std::wstring& name);
};

inline constexpr wchar_t cStatic[] = L"StaticKeys";
inline constexpr wchar_t cDynamic[] = L"DynamicKeys";
inline constexpr wchar_t cApp[] = L"AppKeys";

// Holds the store's named mutex: what is written in the scope is seen as one change.
class RawTransaction {
  public:
    RawTransaction();
    ~RawTransaction();
    RawTransaction(const RawTransaction&) = delete;
    RawTransaction& operator=(const RawTransaction&) = delete;

  private:
    UniqueHandle m_mutex;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_RAW_STORE_H
