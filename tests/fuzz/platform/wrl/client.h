// SPDX-License-Identifier: MIT
// Stands in for the platform's header, which the headers used here lack: what the command lines
// of the tools are compiled with. No interface is ever called.
#ifndef KORA4_TESTS_FUZZ_PLATFORM_WRL_CLIENT_H
#define KORA4_TESTS_FUZZ_PLATFORM_WRL_CLIENT_H

namespace Microsoft::WRL {

template <typename T>
class ComPtr {
  public:
    ComPtr() = default;
    ComPtr(T* p) : m_p(p) {}
    ComPtr(decltype(nullptr)) {}
    template <typename U>
    ComPtr(const ComPtr<U>& other) : m_p(other.Get()) {}
    T* Get() const { return m_p; }
    T* operator->() const { return m_p; }
    T** GetAddressOf() { return &m_p; }
    T** ReleaseAndGetAddressOf() { return &m_p; }
    T** operator&() { return &m_p; }
    T* Detach() { return m_p; }
    void Attach(T* p) { m_p = p; }
    void Reset() { m_p = nullptr; }
    void Swap(ComPtr& other) {
        T* const p = m_p;
        m_p = other.m_p;
        other.m_p = p;
    }
    explicit operator bool() const { return m_p != nullptr; }
    template <typename U>
    long As(U*) const {
        return 0;
    }

  private:
    T* m_p = nullptr;
};

}  // namespace Microsoft::WRL

#endif  // KORA4_TESTS_FUZZ_PLATFORM_WRL_CLIENT_H
