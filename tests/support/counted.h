// SPDX-License-Identifier: MIT
// The identity and the references of a COM object that a test implements.
#ifndef KORA4_TESTS_SUPPORT_COUNTED_H
#define KORA4_TESTS_SUPPORT_COUNTED_H

#include <unknwn.h>
#include <windows.h>

#include <atomic>

namespace kora4::test {

// The base of an object of the one interface `I` that belongs to its references, which any
// thread may take and drop.
template <typename I>
class Counted : public I {
  public:
    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override {
        if (!ppv)
            return E_POINTER;
        *ppv = nullptr;
        if (iid != __uuidof(IUnknown) && iid != __uuidof(I))
            return E_NOINTERFACE;
        *ppv = static_cast<I*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++m_references; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --m_references;
        if (left == 0)
            delete this;
        return left;
    }

    ULONG References() const { return m_references; }

  protected:
    explicit Counted(ULONG references) : m_references(references) {}
    virtual ~Counted() = default;

  private:
    std::atomic<ULONG> m_references;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_COUNTED_H
