// SPDX-License-Identifier: MIT
// A vectored exception handler that takes the texts on their way to a debugger.
#include "faults/debug_output.h"

#include <atomic>

namespace kora4::test {
namespace {

constexpr DWORD cDebugText = 0x40010006;  // arguments: the length, the text

std::atomic<DebugOutput*> s_output{nullptr};

}  // namespace

DebugOutput::DebugOutput() : m_handler(AddVectoredExceptionHandler(1, Handle)) {
    s_output = this;
}

DebugOutput::~DebugOutput() {
    s_output = nullptr;
    RemoveVectoredExceptionHandler(m_handler);
}

LONG CALLBACK DebugOutput::Handle(EXCEPTION_POINTERS* pException) {
    const EXCEPTION_RECORD& record = *pException->ExceptionRecord;
    DebugOutput* const pOutput = s_output;
    if (record.ExceptionCode != cDebugText || record.NumberParameters < 2 || !pOutput)
        return EXCEPTION_CONTINUE_SEARCH;
    const std::lock_guard<std::mutex> hold(pOutput->m_mutex);
    pOutput->m_texts.emplace_back(
        reinterpret_cast<const char*>(record.ExceptionInformation[1]));
    return EXCEPTION_CONTINUE_EXECUTION;
}

void DebugOutput::Clear() {
    const std::lock_guard<std::mutex> hold(m_mutex);
    m_texts.clear();
}

std::vector<std::string> DebugOutput::Texts() const {
    const std::lock_guard<std::mutex> hold(m_mutex);
    return m_texts;
}

std::string DebugOutput::Log() const {
    std::string log;
    for (const std::string& text : Texts())
        log += text;
    return log;
}

}  // namespace kora4::test
