// SPDX-License-Identifier: MIT
// The public header from C++, side by side with the same header from C.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <type_traits>
#include <utility>

#include "layout_c.h"

namespace kora4::test {
namespace {

static_assert(sizeof(KORA4PatchValueUnion) == 8 && alignof(KORA4PatchValueUnion) == 4);
static_assert(offsetof(KORA4PatchValueUnion, m_values) == 4);
static_assert(sizeof(GraphicEQData) == 324 && alignof(GraphicEQData) == 4);
static_assert(offsetof(GraphicEQData, m_freq) == 4 && offsetof(GraphicEQData, m_gain) == 164);
static_assert(sizeof(KORA4APITechnology) == 4 && eNumberKORA4APITechnologies == 6);
static_assert(std::is_same_v<decltype(&IVeltoKORA4API::GetVeltoDemoAppCommand),
                             HRESULT (STDMETHODCALLTYPE IVeltoKORA4API::*)(LPWSTR*)>);
static_assert(std::is_base_of_v<IUnknown, IVeltoKORA4API>);
static_assert(std::is_base_of_v<IUnknown, IVeltoKORA4APICallback>);

// A table of functions in the place of an object: says which slot a call goes through.
struct SlotProbe {
    void** table;
};
template <size_t Slot>
HRESULT STDMETHODCALLTYPE AnswerSlot(void*) {
    return static_cast<HRESULT>(Slot);
}
template <size_t... Slots>
std::array<void*, sizeof...(Slots)> MakeTable(std::index_sequence<Slots...>) {
    return {reinterpret_cast<void*>(&AnswerSlot<Slots>)...};
}

class Layout : public testing::Test {
  protected:
    std::array<void*, 33> m_table = MakeTable(std::make_index_sequence<33>());
    SlotProbe m_probe{m_table.data()};
    IVeltoKORA4API* m_api = reinterpret_cast<IVeltoKORA4API*>(&m_probe);
};

TEST_F(Layout, InitializeIsSlotFourFromCAndFromCpp) {
    EXPECT_EQ(4, InitializeFromC(m_api));
    EXPECT_EQ(4, m_api->Initialize());
}

TEST_F(Layout, FirstAndLastMethodsOfTheApiAreSlotsThreeAndThirtyTwo) {
    EXPECT_EQ(3, m_api->GetVeltoKORA4Version(nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(32, m_api->GetGraphicEQData(nullptr));
}

TEST_F(Layout, FirstAndLastMethodsOfTheCallbackAreSlotsThreeAndEight) {
    auto* callback = reinterpret_cast<IVeltoKORA4APICallback*>(&m_probe);
    EXPECT_EQ(3, callback->OnActiveProfileChange(0));
    EXPECT_EQ(8, callback->OnGraphicEQChange(nullptr));
}

TEST_F(Layout, CAndCppMeanTheSameInterface) {
    EXPECT_TRUE(IsEqualIID(*ApiIidFromC(), __uuidof(IVeltoKORA4API)));
    EXPECT_TRUE(IsEqualIID(IID_IVeltoKORA4APICallback, __uuidof(IVeltoKORA4APICallback)));
}

TEST_F(Layout, ResultCodesHaveTheirNumbersAndSeverities) {
    EXPECT_EQ(0x887D0002u, static_cast<ULONG>(CodeFromC(0)));
    EXPECT_TRUE(FAILED(CodeFromC(0)));
    for (int i = 1; i <= 4; ++i) {
        EXPECT_EQ(0x000401FFu + static_cast<ULONG>(i), static_cast<ULONG>(CodeFromC(i)));
        EXPECT_TRUE(SUCCEEDED(CodeFromC(i)));
    }
}

}  // namespace
}  // namespace kora4::test
