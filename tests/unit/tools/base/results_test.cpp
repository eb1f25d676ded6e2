// SPDX-License-Identifier: MIT
// Results in words, and what becomes of them in a tool.
#include <gtest/gtest.h>
#include <windows.h>

#include <kora4api.h>
#include <kora4/result.hpp>

#include "base/failure.h"
#include "base/results.h"

namespace kora4::tools {
namespace {

// The published numbers are the platform's own, by name.
#define KORA4_SAME(constant)                                                             \
    EXPECT_STREQ(#constant, FindResult(static_cast<std::uint32_t>(constant)) != nullptr  \
                                ? FindResult(static_cast<std::uint32_t>(constant))->name \
                                : "nobody")
#define KORA4_SAME_ERROR(constant)                                             \
    EXPECT_STREQ(#constant, FindResult(cWin32Results | (constant)) != nullptr  \
                                ? FindResult(cWin32Results | (constant))->name \
                                : "nobody")

TEST(PublishedNames, OfResultsAreThePlatforms) {
    KORA4_SAME(S_OK);
    KORA4_SAME(S_FALSE);
    KORA4_SAME(E_POINTER);
    KORA4_SAME(E_FAIL);
    KORA4_SAME(E_INVALIDARG);
    KORA4_SAME(E_OUTOFMEMORY);
    KORA4_SAME(E_NOTIMPL);
    KORA4_SAME(E_NOINTERFACE);
    KORA4_SAME(E_ABORT);
    KORA4_SAME(E_UNEXPECTED);
    KORA4_SAME(E_ACCESSDENIED);
    KORA4_SAME(E_HANDLE);
    KORA4_SAME(RPC_E_CALL_REJECTED);
    KORA4_SAME(RPC_E_CALL_CANCELED);
    KORA4_SAME(RPC_E_SERVER_DIED);
    KORA4_SAME(RPC_E_SERVER_DIED_DNE);
    KORA4_SAME(RPC_E_SERVERFAULT);
    KORA4_SAME(RPC_E_CHANGED_MODE);
    KORA4_SAME(RPC_E_DISCONNECTED);
    KORA4_SAME(RPC_E_CANTCALLOUT_ININPUTSYNCCALL);
    KORA4_SAME(RPC_E_WRONG_THREAD);
    KORA4_SAME(RPC_E_THREAD_NOT_INIT);
    KORA4_SAME(CLASS_E_NOAGGREGATION);
    KORA4_SAME(CLASS_E_CLASSNOTAVAILABLE);
    KORA4_SAME(REGDB_E_CLASSNOTREG);
    KORA4_SAME(REGDB_E_IIDNOTREG);
    KORA4_SAME(CO_E_NOTINITIALIZED);
    KORA4_SAME(CO_E_DLLNOTFOUND);
    KORA4_SAME(CO_E_ERRORINDLL);
    KORA4_SAME(CO_E_OBJISREG);
    KORA4_SAME(CO_E_OBJNOTCONNECTED);
}

TEST(PublishedNames, OfErrorsAreThePlatforms) {
    KORA4_SAME_ERROR(ERROR_FILE_NOT_FOUND);
    KORA4_SAME_ERROR(ERROR_PATH_NOT_FOUND);
    KORA4_SAME_ERROR(ERROR_SHARING_VIOLATION);
    KORA4_SAME_ERROR(ERROR_MOD_NOT_FOUND);
    KORA4_SAME_ERROR(ERROR_PROC_NOT_FOUND);
    KORA4_SAME_ERROR(ERROR_BAD_EXE_FORMAT);
    KORA4_SAME_ERROR(WAIT_TIMEOUT);
    KORA4_SAME_ERROR(ERROR_REGISTRY_IO_FAILED);
    KORA4_SAME_ERROR(ERROR_KEY_DELETED);
    KORA4_SAME_ERROR(ERROR_DLL_INIT_FAILED);
    KORA4_SAME_ERROR(ERROR_PRIVILEGE_NOT_HELD);
    KORA4_SAME_ERROR(RPC_S_SERVER_UNAVAILABLE);
    KORA4_SAME_ERROR(RPC_S_CALL_FAILED);
    KORA4_SAME_ERROR(RPC_S_INVALID_TAG);
    KORA4_SAME_ERROR(RPC_X_NULL_REF_POINTER);
    KORA4_SAME_ERROR(RPC_X_ENUM_VALUE_OUT_OF_RANGE);
    KORA4_SAME_ERROR(RPC_X_BAD_STUB_DATA);
}

TEST(InWords, HaveNameNumberAndMeaning) {
    EXPECT_EQ("E_OUTOFMEMORY (0x8007000e): no memory", InWords(E_OUTOFMEMORY));
    EXPECT_EQ(
        "KORA4_S_NO_SUCH_CUSTOM_PROFILE (0x00040202): nothing changed: the custom profile "
        "does not exist",
        InWords(KORA4_S_NO_SUCH_CUSTOM_PROFILE));
}

TEST(InWords, TakeThePlatformsWordsForWhatNobodyPublished) {
    const HRESULT alreadyExists = HRESULT_FROM_WIN32(ERROR_ALREADY_EXISTS);
    const std::string words = PlatformWords(static_cast<std::uint32_t>(alreadyExists));
    ASSERT_FALSE(words.empty());
    EXPECT_EQ(std::string::npos, words.find_first_of("\r\n")) << words;
    EXPECT_FALSE(words.ends_with('.') || words.ends_with(' ')) << words;
    EXPECT_EQ(words + " (0x800700b7)", InWords(alreadyExists));
}

TEST(InWords, AreNeverABareNumber) {
    const auto unheardOf = static_cast<HRESULT>(0xA1234567);
    EXPECT_EQ("", PlatformWords(0xA1234567));
    EXPECT_EQ("an unknown result (0xa1234567)", InWords(unheardOf));
}

// What Check throws for a result; fails the test when it throws nothing.
Failure Thrown(HRESULT hr) {
    try {
        Check(hr, "reading the active profile");
    } catch (const Failure& failure) {
        return failure;
    }
    ADD_FAILURE() << "nothing was thrown";
    return Failure(ExitCode::eDone, "");
}

TEST(Check, LetsSuccessThrough) {
    EXPECT_EQ(S_OK, Check(S_OK, "reading"));
    EXPECT_EQ(S_FALSE, Check(S_FALSE, "reading"));
    EXPECT_EQ(0x12345, Check(0x12345, "reading"));
}

TEST(Check, SaysWhatWasTriedWhatHappenedAndWhatToDo) {
    const Failure failure = Thrown(E_OUTOFMEMORY);
    EXPECT_STREQ("Reading the active profile failed: E_OUTOFMEMORY (0x8007000e): no memory.",
                 failure.what());
    EXPECT_EQ("Close what takes the memory, or restart the program.", failure.Next());
}

TEST(Check, TellsARefusalFromAFailure) {
    const Failure failure = Thrown(KORA4_S_NO_SUCH_CUSTOM_PROFILE);
    EXPECT_EQ(ExitCode::eRefused, failure.Code());
    EXPECT_STREQ(
        "Reading the active profile was refused: KORA4_S_NO_SUCH_CUSTOM_PROFILE (0x00040202): "
        "nothing changed: the custom profile does not exist.",
        failure.what());
}

TEST(Check, GivesEachKindItsExitCode) {
    for (const HRESULT hr : {KORA4_S_DEMO_MODE_ACTIVE, KORA4_S_NOT_IN_DEMO_PROFILE,
                             KORA4_S_NO_SUCH_CUSTOM_PROFILE, KORA4_S_NOT_A_PRESET_PROFILE})
        EXPECT_EQ(ExitCode::eRefused, Thrown(hr).Code());
    EXPECT_EQ(ExitCode::eNotReady, Thrown(APOERR_NOT_INITIALIZED).Code());
    EXPECT_EQ(ExitCode::eBadInput, Thrown(E_INVALIDARG).Code());
    EXPECT_EQ(ExitCode::eFailed, Thrown(E_FAIL).Code());
    EXPECT_NE(std::string::npos, std::string(Thrown(E_FAIL).what())
                                     .find("the settings store cannot be read or written"));
    EXPECT_EQ(ExitCode::eFailed, Thrown(static_cast<HRESULT>(0xA1234567)).Code());
    EXPECT_FALSE(Thrown(static_cast<HRESULT>(0xA1234567)).Next().empty());
}

}  // namespace
}  // namespace kora4::tools
