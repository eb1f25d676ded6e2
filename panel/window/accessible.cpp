// SPDX-License-Identifier: MIT
// IAccessible of the controls that draw themselves.
#include "panel/window/accessible.h"

#include <atomic>

namespace panel {

// Called on the thread of the window only; other processes come in through its messages.
class AccessibleHost::Object final : public IAccessible {
  public:
    Object(HWND window, AccessibleControl& control) : m_window(window), m_control(&control) {}

    void Forget() { m_control = nullptr; }

    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override {
        if (!ppv)
            return E_POINTER;
        *ppv = nullptr;
        if (!IsEqualGUID(iid, __uuidof(IUnknown)) && !IsEqualGUID(iid, __uuidof(IDispatch)) &&
            !IsEqualGUID(iid, __uuidof(IAccessible)))
            return E_NOINTERFACE;
        *ppv = static_cast<IAccessible*>(this);
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

    // Nobody calls by name: clients of this interface know its table.
    STDMETHODIMP GetTypeInfoCount(UINT* pCount) override {
        *pCount = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                        UINT*) override {
        return E_NOTIMPL;
    }

    STDMETHODIMP get_accParent(IDispatch** ppParent) override {
        if (!ppParent)
            return E_POINTER;
        *ppParent = nullptr;
        return AccessibleObjectFromWindow(m_window, static_cast<DWORD>(OBJID_WINDOW),
                                          __uuidof(IDispatch),
                                          reinterpret_cast<void**>(ppParent));
    }
    STDMETHODIMP get_accChildCount(long* pCount) override {
        if (!pCount)
            return E_POINTER;
        *pCount = m_control ? m_control->PartCount() : 0;
        return m_control ? S_OK : RPC_E_DISCONNECTED;
    }
    // The parts have no objects of their own.
    STDMETHODIMP get_accChild(VARIANT child, IDispatch** ppChild) override {
        if (!ppChild)
            return E_POINTER;
        *ppChild = nullptr;
        return IsPart(child) ? S_FALSE : E_INVALIDARG;
    }
    STDMETHODIMP get_accName(VARIANT child, BSTR* pText) override {
        return Text(child, pText, &AccessibleControl::Name);
    }
    STDMETHODIMP get_accValue(VARIANT child, BSTR* pText) override {
        return Text(child, pText, &AccessibleControl::Value);
    }
    STDMETHODIMP get_accDescription(VARIANT, BSTR* pText) override { return NoText(pText); }
    STDMETHODIMP get_accRole(VARIANT child, VARIANT* pRole) override {
        return Number(child, pRole, &AccessibleControl::Role);
    }
    STDMETHODIMP get_accState(VARIANT child, VARIANT* pState) override {
        return Number(child, pState, &AccessibleControl::State);
    }
    STDMETHODIMP get_accHelp(VARIANT child, BSTR* pText) override {
        return Text(child, pText, &AccessibleControl::Help);
    }
    STDMETHODIMP get_accHelpTopic(BSTR* pText, VARIANT, long*) override {
        return NoText(pText);
    }
    STDMETHODIMP get_accKeyboardShortcut(VARIANT, BSTR* pText) override {
        return NoText(pText);
    }
    STDMETHODIMP get_accFocus(VARIANT* pChild) override {
        if (!pChild)
            return E_POINTER;
        VariantInit(pChild);
        if (!m_control || GetFocus() != m_window)
            return S_FALSE;
        return Give(pChild, m_control->FocusedPart());
    }
    STDMETHODIMP get_accSelection(VARIANT* pChild) override { return get_accFocus(pChild); }
    STDMETHODIMP get_accDefaultAction(VARIANT, BSTR* pText) override { return NoText(pText); }
    STDMETHODIMP accSelect(long flags, VARIANT child) override {
        if (!IsPart(child))
            return E_INVALIDARG;
        if (flags & SELFLAG_TAKEFOCUS)
            SetFocus(m_window);
        if (child.lVal != CHILDID_SELF)
            m_control->Select(child.lVal);
        return S_OK;
    }
    STDMETHODIMP accLocation(long* pLeft, long* pTop, long* pWidth, long* pHeight,
                             VARIANT child) override {
        if (!pLeft || !pTop || !pWidth || !pHeight)
            return E_POINTER;
        if (!IsPart(child))
            return E_INVALIDARG;
        const Area area = m_control->Place(child.lVal);
        POINT corner{area.left, area.top};
        ClientToScreen(m_window, &corner);
        *pLeft = corner.x;
        *pTop = corner.y;
        *pWidth = area.Width();
        *pHeight = area.Height();
        return S_OK;
    }
    STDMETHODIMP accNavigate(long direction, VARIANT start, VARIANT* pEnd) override {
        if (!pEnd)
            return E_POINTER;
        VariantInit(pEnd);
        if (!IsPart(start))
            return E_INVALIDARG;
        const long count = m_control->PartCount();
        long part = 0;
        if (start.lVal == CHILDID_SELF)
            part = direction == NAVDIR_FIRSTCHILD  ? 1
                   : direction == NAVDIR_LASTCHILD ? count
                                                   : 0;
        else if (direction == NAVDIR_NEXT || direction == NAVDIR_RIGHT)
            part = start.lVal + 1;
        else if (direction == NAVDIR_PREVIOUS || direction == NAVDIR_LEFT)
            part = start.lVal - 1;
        return part >= 1 && part <= count ? Give(pEnd, part) : S_FALSE;
    }
    STDMETHODIMP accHitTest(long x, long y, VARIANT* pChild) override {
        if (!pChild)
            return E_POINTER;
        VariantInit(pChild);
        if (!m_control)
            return RPC_E_DISCONNECTED;
        POINT point{x, y};
        ScreenToClient(m_window, &point);
        for (long part = m_control->PartCount(); part >= 0; --part) {
            const Area area = m_control->Place(part);
            if (point.x >= area.left && point.x < area.right && point.y >= area.top &&
                point.y < area.bottom)
                return Give(pChild, part);
        }
        return S_FALSE;
    }
    STDMETHODIMP accDoDefaultAction(VARIANT) override { return DISP_E_MEMBERNOTFOUND; }
    STDMETHODIMP put_accName(VARIANT, BSTR) override { return E_NOTIMPL; }
    STDMETHODIMP put_accValue(VARIANT child, BSTR text) override {
        if (!IsPart(child) || !text)
            return E_INVALIDARG;
        return m_control->SetValue(child.lVal, text) ? S_OK : E_INVALIDARG;
    }

  private:
    ~Object() = default;

    bool IsPart(const VARIANT& child) const {
        return m_control && child.vt == VT_I4 && child.lVal >= 0 &&
               child.lVal <= m_control->PartCount();
    }
    static HRESULT Give(VARIANT* pNumber, long number) {
        pNumber->vt = VT_I4;
        pNumber->lVal = number;
        return S_OK;
    }
    static HRESULT NoText(BSTR* pText) {
        if (!pText)
            return E_POINTER;
        *pText = nullptr;
        return S_FALSE;
    }
    HRESULT Text(const VARIANT& child, BSTR* pText,
                 std::wstring (AccessibleControl::*what)(long) const) const {
        if (!pText)
            return E_POINTER;
        *pText = nullptr;
        if (!IsPart(child))
            return E_INVALIDARG;
        const std::wstring text = (m_control->*what)(child.lVal);
        if (text.empty())
            return S_FALSE;
        *pText = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
        return *pText ? S_OK : E_OUTOFMEMORY;
    }
    HRESULT Number(const VARIANT& child, VARIANT* pNumber,
                   long (AccessibleControl::*what)(long) const) const {
        if (!pNumber)
            return E_POINTER;
        VariantInit(pNumber);
        return IsPart(child) ? Give(pNumber, (m_control->*what)(child.lVal)) : E_INVALIDARG;
    }

    const HWND m_window;
    AccessibleControl* m_control;
    std::atomic<ULONG> m_references{1};
};

AccessibleHost::AccessibleHost(HWND window, AccessibleControl& control)
    : m_window(window), m_object(new Object(window, control)) {}

AccessibleHost::~AccessibleHost() {
    m_object->Forget();
    m_object->Release();
}

std::optional<LRESULT> AccessibleHost::Answer(WPARAM wParam, LPARAM lParam) {
    // The upper half is not defined.
    if (static_cast<LONG>(lParam) != OBJID_CLIENT)
        return std::nullopt;
    return LresultFromObject(__uuidof(IAccessible), wParam, m_object);
}

void AccessibleHost::Tell(DWORD event, long part) const {
    NotifyWinEvent(event, m_window, OBJID_CLIENT, part);
}

}  // namespace panel
