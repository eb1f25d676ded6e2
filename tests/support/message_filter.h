// SPDX-License-Identifier: MIT
// Message filters, as a host registers them in a single-threaded apartment.
#ifndef KORA4_TESTS_SUPPORT_MESSAGE_FILTER_H
#define KORA4_TESTS_SUPPORT_MESSAGE_FILTER_H

#include <gtest/gtest.h>
#include <objbase.h>

namespace kora4::test {

// The filter of the current thread's apartment as long as it lives. Lets every call in and
// every wait go on; a test overrides what it wants otherwise.
class MessageFilter : public IMessageFilter {
  public:
    MessageFilter() { EXPECT_EQ(S_OK, CoRegisterMessageFilter(this, nullptr)); }
    virtual ~MessageFilter() { EXPECT_EQ(S_OK, CoRegisterMessageFilter(nullptr, nullptr)); }
    MessageFilter(const MessageFilter&) = delete;
    MessageFilter& operator=(const MessageFilter&) = delete;

    STDMETHODIMP QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP_(DWORD)
    HandleInComingCall(DWORD, HTASK, DWORD, LPINTERFACEINFO) override {
        return SERVERCALL_ISHANDLED;
    }
    STDMETHODIMP_(DWORD) RetryRejectedCall(HTASK, DWORD, DWORD) override { return 0; }
    STDMETHODIMP_(DWORD) MessagePending(HTASK, DWORD, DWORD) override {
        return PENDINGMSG_WAITDEFPROCESS;
    }
};

// Breaks off every wait in which a message comes.
class CancellingFilter final : public MessageFilter {
  public:
    STDMETHODIMP_(DWORD) MessagePending(HTASK, DWORD, DWORD) override {
        ++cancelled;
        return PENDINGMSG_CANCELCALL;
    }

    int cancelled = 0;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_MESSAGE_FILTER_H
