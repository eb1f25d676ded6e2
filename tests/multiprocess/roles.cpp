// SPDX-License-Identifier: MIT
// The roles of a child: a peer that obeys commands, and one that changes settings without
// rest.
#include "multiprocess/roles.h"

#include <cstdio>
#include <iostream>
#include <memory>
#include <random>
#include <sstream>

#include "faults/fault_injector.h"
#include "multiprocess/apartment_thread.h"
#include "multiprocess/api_commands.h"
#include "multiprocess/burst_writer.h"
#include "multiprocess/teardown.h"

namespace kora4::test {
namespace {

void Answer(const std::string& line) {
    std::cout << line << std::endl;
}

std::string ResultText(HRESULT hr) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08x", static_cast<unsigned>(hr));
    return text;
}

class Peer {
  public:
    ~Peer() {
        if (m_thread)
            m_thread->Run([this] { m_client = {}; });
    }

    std::string Run(const std::string& line) {
        std::istringstream words(line);
        std::string command;
        words >> command >> std::ws;
        std::string rest;
        std::getline(words, rest);
        if (command == "raw")
            return m_rawWriter.Run(rest) ? "ok" : "no such raw command";
        if (command == "open")
            return Open(rest == "mta" ? OwnerKind::eMta : OwnerKind::eStaPumping);
        if (!m_thread)
            return "nothing is open";
        if (command == "log")
            return Log(std::stoul(rest));
        HRESULT hr = E_FAIL;
        m_thread->Run([&] {
            hr = command == "watch" ? Watch() : RunApiCommand(*m_client.spApi.Get(), line);
        });
        return ResultText(hr);
    }

  private:
    std::string Open(OwnerKind kind) {
        m_thread = std::make_unique<ApartmentThread>(kind);
        HRESULT hr = E_FAIL;
        m_thread->Run([&] {
            m_client.spApi = m_library.Create();
            hr = m_client.spApi ? m_client.spApi->Initialize() : E_NOINTERFACE;
        });
        return ResultText(hr);
    }

    HRESULT Watch() {
        m_client.spRecorder = CallbackRecorder::Create();
        return m_client.spApi->RegisterChangeNotifications(m_client.spRecorder.Get());
    }

    std::string Log(std::size_t count) {
        m_client.spRecorder->WaitForLines(count, cBoundedWait / 2);
        std::string lines;
        for (const std::string& line : m_client.spRecorder->Log())
            lines += (lines.empty() ? "" : "|") + line;
        return lines;
    }

    ApiLibrary m_library;
    RawWriter m_rawWriter;
    std::unique_ptr<ApartmentThread> m_thread;
    WatchingClient m_client;
};

int RunPeer() {
    Peer peer;
    std::string line;
    while (std::getline(std::cin, line))
        Answer(peer.Run(line));
    return 0;
}

int RunRestless() {
    const Apartment apartment(COINIT_MULTITHREADED);
    const ApiLibrary library;
    const Microsoft::WRL::ComPtr<IVeltoKORA4API> spApi = library.Create();
    if (!spApi || FAILED(spApi->Initialize()))
        return 1;
    Answer("ready");
    unsigned seed = 0;
    if (!(std::cin >> seed))
        return 0;
    std::mt19937 random(seed);
    const ULONGLONG end = GetTickCount64() + 60000;
    while (GetTickCount64() < end)
        RunApiCommand(*spApi.Get(), RandomCommand(random));
    return 0;
}

int RunDoomed() {
    const Apartment apartment(COINIT_MULTITHREADED);
    const ApiLibrary library;
    const Microsoft::WRL::ComPtr<IVeltoKORA4API> spApi = library.Create();
    FaultInjector injector(GetModuleHandleW(L"QXA64T.dll"));
    Answer("ready");
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream words(line);
        std::string first;
        words >> first;
        if (first == "die") {
            std::string when;
            std::size_t write = 0;
            words >> when >> write;
            injector.KillAt(write, when == "before" ? Death::eBefore : Death::eAfter);
        } else if (first == "count") {
            injector.Count();
        } else {
            words.seekg(0);
        }
        std::string command;
        std::getline(words >> std::ws, command);
        const HRESULT hr = RunApiCommand(*spApi.Get(), command);
        Answer(first == "count" ? std::to_string(injector.Writes()) : ResultText(hr));
        injector.Disarm();
    }
    return 0;
}

}  // namespace

int RunRole(const std::string& role) {
    if (role == cPeerRole)
        return RunPeer();
    if (role == cRestlessRole)
        return RunRestless();
    if (role == cTeardownRole)
        return RunTeardown();
    if (role == cBurstWriterRole)
        return RunBurstWriter();
    if (role == cDoomedRole)
        return RunDoomed();
    std::cerr << "there is no role " << role << "\n";
    return 2;
}

}  // namespace kora4::test
