// SPDX-License-Identifier: MIT
// What the library asks of the platform, call by call, against the list in
// docs/performance.md. A failure prints the row as it would be right now.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "checks/documents_markdown.h"
#include "contract/profiles.h"
#include "windows/bare_methods.h"
#include "windows/call_list.h"
#include "windows/cases.h"
#include "windows/client.h"
#include "windows/import_hook.h"
#include "windows/place.h"

namespace kora4::test {
namespace {

using bench::Bare;
using bench::CallList;
using bench::Case;
using bench::ImportedCall;
using Microsoft::WRL::ComPtr;

constexpr DWORD cPassMilliseconds = 10000;
constexpr std::uint32_t cNoTrace = 0;
constexpr std::uint32_t cDefaultTrace = 0x400;

const MarkedTable& DocumentedCalls() {
    static const Document document = ParseDocument(ReadProjectFile("docs/performance.md"));
    static const MarkedTable none;
    const MarkedTable* const pTable = document.Find("platform calls");
    return pTable ? *pTable : none;
}

// The row of the document as it is written there; the name alone when there is none.
std::string Documented(const std::string& name) {
    for (const Row& row : DocumentedCalls().rows)
        if (row.front() == name) {
            std::string text = "|";
            for (const std::string& cell : row)
                text += " " + cell + " |";
            return text;
        }
    return "no row for " + name;
}

std::string RowOf(const std::string& name, const CallList& calls, const std::string& beyond,
                  std::size_t lines) {
    return "| " + name + " | " + bench::Written(calls) + " | " + beyond + " | " +
           std::to_string(lines) + " |";
}

// Of each kind, how many more there are in `made`. What is missing there fails the test.
std::string Beyond(const CallList& made, const CallList& needed) {
    std::map<std::string, int> more;
    for (const std::string& kind : made)
        ++more[kind];
    for (const std::string& kind : needed)
        --more[kind];
    std::string text;
    for (const auto& [kind, count] : more) {
        EXPECT_LE(0, count) << "the bare sequence has more calls of the kind " << kind
                            << " than the method makes";
        if (count > 0)
            text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + kind;
    }
    return text.empty() ? "none" : text;
}

CallList Queries(const CallList& calls) {
    CallList queries;
    for (const std::string& kind : calls)
        if (kind == bench::call::cNumber || kind == bench::call::cText ||
            kind == bench::call::cBlob)
            queries.push_back(kind);
    return queries;
}

std::set<std::string> s_compared;

// A row that nothing is compared with may say anything.
class EveryRow final : public testing::Environment {
  public:
    void TearDown() override {
        // Of a few tests only, a few rows.
        if (GTEST_FLAG_GET(filter) != "*")
            return;
        EXPECT_FALSE(DocumentedCalls().rows.empty());
        for (const Row& row : DocumentedCalls().rows)
            EXPECT_TRUE(s_compared.contains(row.front())) << row.front();
        for (const std::string& method : Methods())
            EXPECT_TRUE(std::ranges::any_of(
                s_compared,
                [&](const std::string& name) {
                    return name.substr(0, name.find_first_of(" ,")) == method;
                }))
                << method << " has no row";
    }

  private:
    static std::vector<std::string> Methods() {
        const std::string idl = ReadProjectFile("idl/veltokora4api.idl");
        const std::string methods = idl.substr(idl.find("interface IVeltoKORA4API :"));
        static const std::regex cMethod(R"(\n    HRESULT (\w+)\()");
        std::vector<std::string> names;
        for (std::sregex_iterator i(methods.begin(), methods.end(), cMethod), end; i != end;
             ++i)
            names.push_back((*i)[1]);
        EXPECT_EQ(30u, names.size());
        return names;
    }
};

testing::Environment* const s_everyRow = testing::AddGlobalTestEnvironment(new EveryRow);

class PlatformCalls : public testing::Test {
  protected:
    PlatformCalls() {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        m_place.Fill();
    }
    ~PlatformCalls() override { CoUninitialize(); }

    // The message lines of `call` with the default trace word.
    std::size_t LinesOf(const Case& method, bench::Scene& scene) {
        Put(m_place.traceWord, cDefaultTrace);
        m_library.Initialized();
        if (method.prepare)
            method.prepare(scene);
        ++scene.round;
        m_hook.Start();
        method.call(scene);
        m_hook.Stop();
        Put(m_place.traceWord, cNoTrace);
        m_library.Initialized();
        const CallList calls = m_hook.OwnCalls();
        return static_cast<std::size_t>(std::ranges::count(calls, bench::call::cLine));
    }

    // A blob is asked for its size first.
    void ExpectNoValueReadTwice() {
        std::set<std::pair<HKEY, std::wstring>> read;
        for (const ImportedCall& imported : m_hook.Calls()) {
            if (!imported.key || imported.kind == bench::call::cBlob)
                continue;
            EXPECT_TRUE(read.insert({imported.key, imported.value}).second)
                << std::string(imported.value.begin(), imported.value.end());
        }
    }

    void Expect(const std::string& name, const CallList& calls, const std::string& beyond,
                std::size_t lines = 0) {
        EXPECT_EQ(Documented(name), RowOf(name, calls, beyond, lines));
        s_compared.insert(name);
    }

    const bench::Library m_library;
    bench::Place m_place = bench::Place::Library();
    bench::ImportHook m_hook{m_library.Module()};
};

class Told final : public bench::Callback {
  public:
    HRESULT Called() override {
        ++m_calls;
        return S_OK;
    }
    int m_calls = 0;
};

TEST_F(PlatformCalls, OfEveryMethodAreThoseOfTheDocument) {
    const ComPtr<IVeltoKORA4API> spApi = m_library.Initialized();
    Told told;
    bench::Scene scene{spApi.Get(), &told, m_place, Bare(m_place)};
    for (const Case& method : bench::Cases()) {
        SCOPED_TRACE(method.name);
        if (method.prepare)
            method.prepare(scene);
        ++scene.round;
        m_hook.Start();
        const HRESULT hr = method.call(scene);
        m_hook.Stop();
        EXPECT_EQ(method.expected, hr);
        const CallList made = m_hook.OwnCalls();
        ExpectNoValueReadTwice();

        CallList needed;
        if (method.prepare)
            method.prepare(scene);
        ++scene.round;
        scene.bare.RecordTo(&needed);
        method.bare(scene);
        scene.bare.RecordTo(nullptr);
        Expect(method.name, made, Beyond(made, needed), LinesOf(method, scene));
    }
    spApi->UnregisterChangeNotifications();
}

TEST_F(PlatformCalls, OfTheLifeOfAnObjectAreThoseOfTheDocument) {
    m_library.Initialized();  // what the process needs once is there
    m_hook.Start();
    ComPtr<IVeltoKORA4API> spApi = m_library.Create();
    m_hook.Stop();
    Expect("creation", m_hook.OwnCalls(), "none");

    m_hook.Start();
    EXPECT_EQ(S_OK, spApi->Initialize());
    EXPECT_TRUE(m_hook.AwaitRest());
    m_hook.Stop();
    ExpectNoValueReadTwice();
    CallList needed;
    Bare bare(m_place);
    bare.RecordTo(&needed);
    bare.Number(m_place.traceWord);
    bench::bare::LoadAll(bare);
    Expect("Initialize", m_hook.OwnCalls(),
           Beyond(Queries(m_hook.OwnCalls()), Queries(needed)));
    Expect("Initialize, monitor thread", m_hook.OtherCalls(), "none");

    m_hook.Start();
    spApi.Reset();
    m_hook.Stop();
    Expect("Release", m_hook.OwnCalls(), "none");
    Expect("Release, monitor thread", m_hook.OtherCalls(), "none");
}

class PassCalls : public PlatformCalls {
  protected:
    // Changes the store as another program does, and takes messages until the object has
    // looked at it and its monitor waits again.
    template <typename Change>
    void MakePass(Change&& change) {
        m_hook.Start();
        WaitForSingleObject(m_place.Mutex(), INFINITE);
        change();
        ReleaseMutex(m_place.Mutex());
        const ULONGLONG end = GetTickCount64() + cPassMilliseconds;
        const UniqueHandle never(CreateEventW(nullptr, FALSE, FALSE, nullptr));
        while (!HasPassed() && GetTickCount64() < end)
            bench::PumpUntil(never.Get(), 20);
        m_hook.Stop();
        ASSERT_TRUE(HasPassed());
    }

    void ExpectPass(const std::string& name, std::uint32_t changed) {
        CallList needed;
        Bare bare(m_place);
        bare.RecordTo(&needed);
        bench::bare::Analyse(bare, static_cast<KORA4PresetTechnology>(changed));
        ExpectNoValueReadTwice();
        Expect(name, m_hook.OwnCalls(), Beyond(m_hook.OwnCalls(), needed));
    }

    void Bump(const bench::Value& counter) { Put(counter, bench::Get(counter, 0) + 1); }

    Told m_told;

  private:
    // The monitor has called the object, and waits again.
    bool HasPassed() const {
        const CallList others = m_hook.OtherCalls();
        return std::ranges::count(others, bench::call::cCom) == 1 &&
               others.back() == bench::call::cWait;
    }
};

TEST_F(PassCalls, AreThoseOfTheDocument) {
    const ComPtr<IVeltoKORA4API> spApi = m_library.Initialized();
    spApi->RegisterChangeNotifications(&m_told);

    // A value that no object looks at, below the watched key.
    MakePass([&] { Put(m_place.dynamicSwitch, 7); });
    EXPECT_EQ(0, m_told.m_calls);
    Expect("a change, monitor thread", m_hook.OtherCalls(), "none");
    ExpectPass("pass that finds nothing", ePresetNoTech);

    MakePass([&] { Put(m_place.Patch(cMovieProfile, eVolumeTech).flag, 0); });
    EXPECT_EQ(1, m_told.m_calls);
    ExpectPass("pass that finds a switch", ePresetNoTech);

    MakePass([&] {
        Put(m_place.Patch(cMovieProfile, eVolumeTech).fields[0], 9);
        Bump(m_place.Trigger(eVolumeTech));
    });
    EXPECT_EQ(2, m_told.m_calls);
    ExpectPass("pass that finds a slider", eVolumeTech);

    MakePass([&] { Bump(m_place.Trigger(eStandardEQTech)); });
    EXPECT_EQ(3, m_told.m_calls);
    ExpectPass("pass that finds the equalizer", eStandardEQTech);
    spApi->UnregisterChangeNotifications();
}

// The watch costs nothing while nothing changes.
TEST_F(PassCalls, AreNoneWhileNothingChanges) {
    constexpr DWORD cIdleMilliseconds = 3000;
    m_hook.Start();
    const ComPtr<IVeltoKORA4API> spApi = m_library.Initialized();
    spApi->RegisterChangeNotifications(&m_told);
    ASSERT_TRUE(m_hook.AwaitRest());
    const UniqueHandle never(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    m_hook.Start();
    bench::PumpUntil(never.Get(), cIdleMilliseconds);
    m_hook.Stop();
    EXPECT_EQ("none", bench::Written(m_hook.OwnCalls()));
    EXPECT_EQ("none", bench::Written(m_hook.OtherCalls()));
    spApi->UnregisterChangeNotifications();
}

}  // namespace
}  // namespace kora4::test
