// CVarTable: which of like-named variables is found, and what a variable tells of its table.
#include <gtest/gtest.h>

#include "base/memory_budget.h"
#include "interpreter/var_table.h"

namespace vl {
namespace {

class VarTableCacheTest : public testing::Test {
 protected:
  CVariable* Add(uint32_t nameId, int32_t level) {
    CVariable* variable = table.Add(nameId, level, pool);
    variable->SetInt(level);
    return variable;
  }

  MemoryBudget budget;
  CVariablePool pool{nullptr, &budget};
  CVarTable table;
};

TEST_F(VarTableCacheTest, TheNewestHidesAndUncoversTheOlder) {
  CVariable* oldest = Add(7, 0);
  CVariable* middle = Add(7, 1);
  CVariable* newest = Add(7, 3);
  CVariable* other = Add(7 | 8 << 16, 2);  // most likely of the same bucket
  EXPECT_EQ(table.Find(7), newest);
  EXPECT_EQ(newest->home, &table);
  EXPECT_EQ(middle->home, nullptr);
  EXPECT_EQ(oldest->home, nullptr);
  EXPECT_EQ(other->home, &table);

  table.RemoveFromLevel(2, pool);
  EXPECT_EQ(table.Find(7), middle);
  EXPECT_EQ(middle->home, &table);
  EXPECT_EQ(newest->home, nullptr);
  EXPECT_EQ(other->home, nullptr);
  EXPECT_EQ(table.Find(other->nameId), nullptr);

  table.RemoveFromLevel(1, pool);
  EXPECT_EQ(table.Find(7), oldest);
  EXPECT_EQ(oldest->home, &table);
  EXPECT_EQ(table.Count(), 1u);

  table.Clear(pool);
  EXPECT_EQ(oldest->home, nullptr);
  EXPECT_EQ(table.Find(7), nullptr);
  EXPECT_EQ(table.Count(), 0u);
}

TEST_F(VarTableCacheTest, HoldsThousandsAndForgetsScopes) {
  // As a name pool gives them: 32 buckets, each counted from 0; twice, the second ones in a block.
  constexpr uint32_t kNames = 3000;
  const auto nameId = [](uint32_t i) { return (i % 32) << 16 | i / 32; };
  std::vector<CVariable*> globals;
  for (uint32_t i = 0; i < kNames; ++i) globals.push_back(Add(nameId(i), 0));
  for (uint32_t i = 0; i < kNames; ++i) Add(nameId(i), 1);
  for (uint32_t i = 0; i < kNames; ++i) EXPECT_EQ(table.Find(nameId(i))->level, 1);
  table.RemoveFromLevel(1, pool);
  for (uint32_t i = 0; i < kNames; ++i) {
    EXPECT_EQ(table.Find(nameId(i)), globals[i]);
    EXPECT_EQ(globals[i]->home, &table);
  }
  EXPECT_EQ(table.Count(), kNames);
  table.Clear(pool);
}

// A spent budget gives null; chunks that grew come back whole.
TEST(ValuePool, CountsAgainstTheBudget) {
  MemoryBudget budget(20000 * sizeof(CValue));
  {
    CElementPool pool(nullptr, &budget);
    std::vector<CValue*> taken;
    while (CValue* value = pool.Take()) taken.push_back(value);
    EXPECT_GE(taken.size(), 20000u - 128u);
    EXPECT_LE(taken.size(), 20000u);
    for (size_t i = 0; i < taken.size(); ++i) taken[i]->SetInt(static_cast<int32_t>(i));
    for (size_t i = 0; i < taken.size(); ++i) ASSERT_EQ(taken[i]->GetInt(), static_cast<int32_t>(i));
    pool.Give(taken.back());
    EXPECT_EQ(pool.Take(), taken.back());
  }
  EXPECT_EQ(budget.Used(), 0u);
}

}  // namespace
}  // namespace vl
