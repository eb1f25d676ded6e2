// SPDX-License-Identifier: MIT
// What a screen reader reads of the parts that draw themselves, from another process.
#include <windows.h>

#include <oleacc.h>
#include <wrl/client.h>

#include "panel/panel_fixture.h"

namespace kora4::test {
namespace {

using namespace ::panel;

VARIANT Part(long part) {
    VARIANT number{};
    number.vt = VT_I4;
    number.lVal = part;
    return number;
}

class Reader {
  public:
    explicit Reader(HWND control) {
        EXPECT_EQ(S_OK, AccessibleObjectFromWindow(
                            control, static_cast<DWORD>(OBJID_CLIENT), __uuidof(IAccessible),
                            reinterpret_cast<void**>(m_object.GetAddressOf())));
    }
    explicit operator bool() const { return m_object.Get() != nullptr; }
    IAccessible* operator->() const { return m_object.Get(); }

    std::wstring Name(long part) const { return Text(&IAccessible::get_accName, part); }
    std::wstring Value(long part) const { return Text(&IAccessible::get_accValue, part); }
    long Role(long part) const { return Number(&IAccessible::get_accRole, part); }
    long State(long part) const { return Number(&IAccessible::get_accState, part); }

  private:
    std::wstring Text(HRESULT (STDMETHODCALLTYPE IAccessible::*get)(VARIANT, BSTR*),
                      long part) const {
        BSTR text = nullptr;
        if ((m_object.Get()->*get)(Part(part), &text) != S_OK)
            return L"(none)";
        const std::wstring copy(text, SysStringLen(text));
        SysFreeString(text);
        return copy;
    }
    long Number(HRESULT (STDMETHODCALLTYPE IAccessible::*get)(VARIANT, VARIANT*),
                long part) const {
        VARIANT number{};
        EXPECT_EQ(S_OK, (m_object.Get()->*get)(Part(part), &number));
        EXPECT_EQ(VT_I4, number.vt);
        return number.lVal;
    }

    Microsoft::WRL::ComPtr<IAccessible> m_object;
};

TEST_F(PanelTest, TellsAScreenReaderTheCurveBandByBand) {
    ASSERT_NO_FATAL_FAILURE(Start());
    Bands bands = *Others().GetGraphicEQData();
    bands[4].gain = -4.5f;
    ASSERT_TRUE(Others().SetGraphicEQData(bands));
    ASSERT_TRUE(Panel().StatusBecomes(L"Another program"));
    const Reader curve(Panel().Control(eEqualizer));
    ASSERT_TRUE(curve);
    long count = 0;
    EXPECT_EQ(S_OK, curve->get_accChildCount(&count));
    EXPECT_EQ(static_cast<long>(bands.size()), count);
    EXPECT_EQ(L"Curve of the graphic equalizer", curve.Name(CHILDID_SELF));
    EXPECT_EQ(ROLE_SYSTEM_CHART, curve.Role(CHILDID_SELF));
    EXPECT_EQ(L"Band 5: 500 Hz", curve.Name(5));
    EXPECT_EQ(L"-4.5 dB", curve.Value(5));
    EXPECT_EQ(ROLE_SYSTEM_SLIDER, curve.Role(5));
    EXPECT_EQ(0, curve.State(5) & STATE_SYSTEM_SELECTED);

    Panel().TabTo(eEqualizer);
    Press(VK_RIGHT);
    EXPECT_TRUE(Becomes([&] { return (curve.State(2) & STATE_SYSTEM_FOCUSED) != 0; }));
    VARIANT focus{};
    EXPECT_EQ(S_OK, curve->get_accFocus(&focus));
    EXPECT_EQ(2, focus.lVal);
    long left = 0, top = 0, width = 0, height = 0;
    EXPECT_EQ(S_OK, curve->accLocation(&left, &top, &width, &height, Part(5)));
    VARIANT hit{};
    EXPECT_EQ(S_OK, curve->accHitTest(left + width / 2, top + height / 2, &hit));
    EXPECT_EQ(5, hit.lVal);
    EXPECT_EQ(S_OK, curve->accNavigate(NAVDIR_FIRSTCHILD, Part(CHILDID_SELF), &hit));
    EXPECT_EQ(1, hit.lVal);
    EXPECT_EQ(S_FALSE, curve->accNavigate(NAVDIR_NEXT, Part(count), &hit));
    BSTR text = nullptr;
    EXPECT_EQ(E_INVALIDARG, curve->get_accName(Part(count + 1), &text));

    const BSTR wanted = SysAllocString(L"+2 dB");
    EXPECT_EQ(S_OK, curve->put_accValue(Part(3), wanted));
    SysFreeString(wanted);
    EXPECT_TRUE(Becomes([&] { return (*Others().GetGraphicEQData())[2].gain == 2; }));

    ASSERT_TRUE(Others().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MOVIE, true));
    EXPECT_TRUE(Becomes([&] { return (curve.State(1) & STATE_SYSTEM_UNAVAILABLE) != 0; }));
}

TEST_F(PanelTest, TellsAScreenReaderTheLevels) {
    ASSERT_NO_FATAL_FAILURE(Start());
    const Reader levels(Panel().Control(eLevels));
    ASSERT_TRUE(levels);
    EXPECT_EQ(L"Levels", levels.Name(CHILDID_SELF));
    EXPECT_EQ(ROLE_SYSTEM_INDICATOR, levels.Role(CHILDID_SELF));
    EXPECT_TRUE(Becomes([&] { return levels.Value(CHILDID_SELF).starts_with(L"No levels"); }));
    EXPECT_NE(0, levels.State(CHILDID_SELF) & STATE_SYSTEM_UNAVAILABLE);
    {
        RunningTool engine("kora4sim", {"--for", "60", "--quiet", "--seed", "1"});
        EXPECT_TRUE(
            Becomes([&] { return levels.Value(CHILDID_SELF).starts_with(L"loudest"); }));
        EXPECT_EQ(STATE_SYSTEM_READONLY, levels.State(CHILDID_SELF));
        engine.Kill();
    }
    Panel().TabTo(eLevelBox);
    Press(VK_SPACE);
    EXPECT_TRUE(
        Becomes([&] { return levels.Value(CHILDID_SELF) == L"Levels are switched off."; }));
}

TEST_F(PanelTest, AnswersAScreenReaderThatOutlivesIt) {
    ASSERT_NO_FATAL_FAILURE(Start());
    const Reader curve(Panel().Control(eEqualizer));
    ASSERT_TRUE(curve);
    m_panel.reset();
    long count = 0;
    EXPECT_TRUE(FAILED(curve->get_accChildCount(&count)));
}

}  // namespace
}  // namespace kora4::test
