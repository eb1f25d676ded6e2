// SPDX-License-Identifier: MIT
// The wrapper that makes a COM object of a class.
#include "platform/com_object.h"

#include <gtest/gtest.h>

#include <vector>

namespace kora4::test {
namespace {

class Observed : public IUnknown {
  public:
    virtual ~Observed() { ++*m_pDestructions; }

    void FinalRelease() {
        ++*m_pFinalReleases;
        m_pCounts->push_back(AddRef());
        m_pCounts->push_back(AddRef());
        Release();
        Release();
    }
    void Watch(int* pFinalReleases, int* pDestructions, std::vector<ULONG>* pCounts) {
        m_pFinalReleases = pFinalReleases;
        m_pDestructions = pDestructions;
        m_pCounts = pCounts;
    }

  protected:
    void* FindInterface(REFIID iid) {
        return iid == __uuidof(IUnknown) ? static_cast<IUnknown*>(this) : nullptr;
    }

  private:
    int* m_pFinalReleases = nullptr;
    int* m_pDestructions = nullptr;
    std::vector<ULONG>* m_pCounts = nullptr;
};

class ComObjectTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(S_OK, ComObject<Observed>::Create(&m_pObject));
        m_pObject->Watch(&m_finalReleases, &m_destructions, &m_counts);
    }

    ComObject<Observed>* m_pObject = nullptr;
    int m_finalReleases = 0;
    int m_destructions = 0;
    std::vector<ULONG> m_counts;
};

TEST_F(ComObjectTest, RefusesANullPointerForAnInterface) {
    EXPECT_EQ(E_POINTER, m_pObject->QueryInterface(__uuidof(IUnknown), nullptr));
    EXPECT_EQ(0u, m_pObject->Release());
}

TEST_F(ComObjectTest, CountsItsReferences) {
    EXPECT_EQ(2u, m_pObject->AddRef());
    EXPECT_FALSE(IsGoing(2));
    EXPECT_EQ(1u, m_pObject->Release());
    EXPECT_EQ(0, m_finalReleases);
    EXPECT_EQ(0u, m_pObject->Release());
    EXPECT_EQ(1, m_destructions);
}

TEST_F(ComObjectTest, AReferenceThatItsDestructionTakesAndDropsDoesNotDestroyItAgain) {
    EXPECT_EQ(0u, m_pObject->Release());
    EXPECT_EQ(1, m_finalReleases);
    EXPECT_EQ(1, m_destructions);
}

TEST_F(ComObjectTest, AReferenceThatIsTakenTooLateIsToldApart) {
    m_pObject->Release();
    ASSERT_EQ(2u, m_counts.size());
    EXPECT_TRUE(IsGoing(m_counts[0]));
    EXPECT_TRUE(IsGoing(m_counts[1]));
}

TEST_F(ComObjectTest, HoldsTheModuleUntilItIsDestroyed) {
    EXPECT_TRUE(Module::IsLocked());
    m_pObject->Release();
    EXPECT_FALSE(Module::IsLocked());
}

}  // namespace
}  // namespace kora4::test
