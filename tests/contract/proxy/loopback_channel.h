// SPDX-License-Identifier: MIT
// A channel that joins a proxy and a stub on one thread and keeps what passes between them.
#ifndef KORA4_TESTS_CONTRACT_PROXY_LOOPBACK_CHANNEL_H
#define KORA4_TESTS_CONTRACT_PROXY_LOOPBACK_CHANNEL_H

#include <objidl.h>
#include <rpcndr.h>
#include <windows.h>
#include <wrl/client.h>

#include <memory>
#include <vector>

namespace kora4::test {

// Lives on the stack of a test: the references that proxy and stub take are not counted,
// both are gone before it.
class LoopbackChannel final : public IRpcChannelBuffer {
  public:
    explicit LoopbackChannel(IRpcStubBuffer* stub) : m_stub(stub) {}

    // The last request.
    ULONG m_slot = 0;
    std::vector<BYTE> m_request;
    std::vector<BYTE> m_reply;

    // Hands the stub a request that no proxy has made. The result is the stub's.
    HRESULT Forge(ULONG slot, const std::vector<BYTE>& request) {
        RPCOLEMESSAGE message{};
        message.iMethod = slot;
        message.dataRepresentation = NDR_LOCAL_DATA_REPRESENTATION;
        message.cbBuffer = static_cast<ULONG>(request.size());
        GetBuffer(&message, IID_NULL);
        std::copy(request.begin(), request.end(), static_cast<BYTE*>(message.Buffer));
        return Deliver(&message);
    }

    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override {
        const bool known = iid == IID_IUnknown || iid == IID_IRpcChannelBuffer;
        *ppv = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }

    STDMETHODIMP GetBuffer(RPCOLEMESSAGE* message, REFIID) override {
        m_buffers.push_back(std::make_unique<BYTE[]>(message->cbBuffer + 8));
        message->Buffer = m_buffers.back().get();
        message->dataRepresentation = NDR_LOCAL_DATA_REPRESENTATION;
        return S_OK;
    }
    STDMETHODIMP SendReceive(RPCOLEMESSAGE* message, ULONG* status) override {
        *status = 0;
        return Deliver(message);
    }
    STDMETHODIMP FreeBuffer(RPCOLEMESSAGE*) override { return S_OK; }
    STDMETHODIMP GetDestCtx(DWORD* context, void** data) override {
        *context = MSHCTX_INPROC;
        if (data)
            *data = nullptr;
        return S_OK;
    }
    STDMETHODIMP IsConnected() override { return S_OK; }

  private:
    static std::vector<BYTE> Bytes(const RPCOLEMESSAGE& message) {
        const auto* first = static_cast<const BYTE*>(message.Buffer);
        return {first, first + message.cbBuffer};
    }

    HRESULT Deliver(RPCOLEMESSAGE* message) {
        message->iMethod &= 0x7FFFu;  // above: a flag that a transport drops
        m_slot = message->iMethod;
        m_request = Bytes(*message);
        m_reply.clear();
        const HRESULT hr = m_stub->Invoke(message, this);
        if (SUCCEEDED(hr))
            m_reply = Bytes(*message);
        return hr;
    }

    IRpcStubBuffer* const m_stub;
    std::vector<std::unique_ptr<BYTE[]>> m_buffers;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_CONTRACT_PROXY_LOOPBACK_CHANNEL_H
