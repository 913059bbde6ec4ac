// The interpreter's containers, the refresh pass, the event queue, dirty boxes.
#include <memory>

#include "gfx2d/script/dirty_list.h"
#include "host/run.h"
#include "interpreter/index_list.h"
#include "interpreter/interpretor.h"
#include "interpreter/var_table.h"
#include "platform/headless/headless_platform.h"

namespace vl {
namespace {

// --- CIndexList ---

std::vector<int> Walk(const CIndexList<int>& list) {
  std::vector<int> seen;
  uint32_t cursor = list.First();
  while (const int* data = list.Step(cursor)) seen.push_back(*data);
  return seen;
}

TEST(IndexList, OrderAndHandles) {
  int numbers[] = {0, 1, 2, 3};
  CIndexList<int> list;
  EXPECT_EQ(Walk(list), std::vector<int>());
  const uint32_t one = list.Append(&numbers[1]);
  const uint32_t two = list.Append(&numbers[2]);
  const uint32_t zero = list.Prepend(&numbers[0]);
  EXPECT_NE(one, 0u);
  EXPECT_NE(two, 0u);
  EXPECT_NE(zero, 0u);
  EXPECT_EQ(Walk(list), (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(list.Find(&numbers[2]), two);
  EXPECT_EQ(list.Find(&numbers[3]), 0u);
  EXPECT_EQ(list.At(zero), &numbers[0]);
  EXPECT_EQ(list.First(), zero);
  EXPECT_EQ(list.Last(), two);
  list.Remove(one);
  EXPECT_EQ(Walk(list), (std::vector<int>{0, 2}));
  EXPECT_EQ(list.At(one), nullptr);
  list.Remove(one);  // a second time, and nonsense: nothing happens
  list.Remove(0);
  list.Remove(12345);
  EXPECT_EQ(list.Count(), 2u);
  list.Remove(zero);
  list.Remove(two);
  EXPECT_EQ(list.First(), 0u);
  EXPECT_EQ(list.Last(), 0u);
  EXPECT_EQ(Walk(list), std::vector<int>());
  list.Append(&numbers[3]);
  EXPECT_EQ(Walk(list), std::vector<int>{3});
}

TEST(IndexList, TheNodeJustReturnedMayGo) {
  int numbers[100];
  CIndexList<int> list;
  for (int i = 0; i < 100; ++i) {
    numbers[i] = i;
    list.Append(&numbers[i]);
  }
  std::vector<int> seen;
  uint32_t cursor = list.First();
  while (const int* data = list.Step(cursor)) {
    seen.push_back(*data);
    if (*data % 2) list.Remove(list.Find(data));
  }
  EXPECT_EQ(seen.size(), 100u);
  EXPECT_EQ(list.Count(), 50u);
  EXPECT_EQ(Walk(list)[1], 2);
}

// A deletion may take others with it, so any node may go while a walk stands somewhere.
TEST(IndexList, OthersMayGoToo) {
  int numbers[10];
  CIndexList<int> list;
  uint32_t nodes[10];
  for (int i = 0; i < 10; ++i) {
    numbers[i] = i;
    nodes[i] = list.Append(&numbers[i]);
  }
  std::vector<int> seen;
  uint32_t cursor = list.First();
  while (const int* data = list.Step(cursor)) {
    seen.push_back(*data);
    if (*data == 3) {
      for (int i = 2; i <= 6; ++i) list.Remove(nodes[i]);
    }
  }
  EXPECT_EQ(seen, (std::vector<int>{0, 1, 2, 3, 7, 8, 9}));
}

TEST(IndexList, GrowsAndReusesNodes) {
  std::vector<int> numbers(1000);
  CIndexList<int> list;
  std::vector<uint32_t> nodes;
  for (int round = 0; round < 3; ++round) {
    nodes.clear();
    for (int& number : numbers) nodes.push_back(list.Append(&number));
    EXPECT_EQ(*std::max_element(nodes.begin(), nodes.end()), 1000u) << "freed nodes are used again";
    for (size_t i = 0; i < nodes.size(); ++i) EXPECT_EQ(list.At(nodes[i]), &numbers[i]);
    for (const uint32_t node : nodes) list.Remove(node);
  }
  EXPECT_EQ(list.Count(), 0u);
}

// --- CVarTable ---

class VarTableTest : public testing::Test {
 protected:
  CVariable& Add(uint32_t name, int32_t level, int32_t value) {
    CVariable* variable = table.Add(name, level, pool);
    EXPECT_NE(variable, nullptr);
    variable->SetInt(value);
    return *variable;
  }
  int32_t ValueOf(uint32_t name) {
    const CVariable* variable = table.Find(name);
    return variable ? variable->data.integer : -1;
  }
  void TearDown() override { table.Clear(pool); }

  MemoryBudget budget;
  CVariablePool pool{nullptr, &budget};
  CVarTable table;
};

TEST_F(VarTableTest, TheNewestOfTwoLikeNamedIsFound) {
  Add(5, 0, 1);
  Add(5, 0, 2);
  Add(13, 0, 3);  // the same bucket of eight
  EXPECT_EQ(ValueOf(5), 2);
  EXPECT_EQ(ValueOf(13), 3);
  EXPECT_EQ(ValueOf(21), -1);
  EXPECT_EQ(table.Count(), 3u);
}

TEST_F(VarTableTest, LevelsGoAndUncoverWhatTheyHid) {
  Add(1, 0, 10);
  Add(1, 1, 11);
  Add(2, 1, 21);
  Add(1, 2, 12);
  Add(3, 3, 33);
  Add(4, 0, 40);  // a function's level-0 entry made late stays
  table.RemoveFromLevel(3, pool);
  EXPECT_EQ(ValueOf(3), -1);
  EXPECT_EQ(ValueOf(1), 12);
  table.RemoveFromLevel(2, pool);
  EXPECT_EQ(ValueOf(1), 11);
  table.RemoveFromLevel(1, pool);
  EXPECT_EQ(ValueOf(1), 10);
  EXPECT_EQ(ValueOf(2), -1);
  EXPECT_EQ(ValueOf(4), 40);
  EXPECT_FALSE(table.HasScoped());
  EXPECT_EQ(table.Count(), 2u);
}

TEST_F(VarTableTest, GrowthKeepsAgeAndAddresses) {
  constexpr uint32_t kNames = 5000;
  std::vector<CVariable*> addresses;
  for (uint32_t n = 0; n < kNames; ++n) {
    const uint32_t name = (n % 32) << 16 | n / 32;
    addresses.push_back(&Add(name, 0, static_cast<int32_t>(n)));
    if (n % 7 == 0) addresses.back() = &Add(name, 1, static_cast<int32_t>(n + 100000));
  }
  for (uint32_t n = 0; n < kNames; ++n) {
    const uint32_t name = (n % 32) << 16 | n / 32;
    ASSERT_EQ(ValueOf(name), static_cast<int32_t>(n % 7 == 0 ? n + 100000 : n));
    ASSERT_EQ(table.Find(name), addresses[n]);
  }
  table.RemoveFromLevel(1, pool);
  for (uint32_t n = 0; n < kNames; ++n) ASSERT_EQ(ValueOf((n % 32) << 16 | n / 32), static_cast<int32_t>(n));
  uint32_t counted = 0;
  table.ForEach([&](const CVariable&) { ++counted; });
  EXPECT_EQ(counted, kNames);
  EXPECT_EQ(table.Count(), kNames);
}

TEST(VariablePool, EndsWithTheBudgetAndReturnsIt) {
  MemoryBudget budget(300 * sizeof(CVariable));
  {
    CVariablePool pool(nullptr, &budget);
    CVarTable table;
    uint32_t made = 0;
    while (table.Add(made, 0, pool)) ++made;
    EXPECT_GE(made, 128u);
    EXPECT_LE(made, 300u);
    EXPECT_EQ(table.Count(), made);
    table.Clear(pool);
    uint32_t again = 0;
    while (table.Add(again, 0, pool)) ++again;
    EXPECT_EQ(again, made) << "what was cleared is free again";
    table.Clear(pool);
  }
  EXPECT_EQ(budget.Used(), 0u);
}

// --- What needs an interpreter ---

class InterpretorTest : public testing::Test {
 protected:
  InterpretorTest() : platform_(HeadlessOptions{}), interpreter(param_, platform_.services(), PlayerClasses()) {
    interpreter.InitWithoutApplication({});
  }
  CThreadParam param_;
  HeadlessPlatform platform_;

 public:
  CInterpretor interpreter;
  std::vector<std::string> log;
};

struct FakeRefresh : CIRefresh {
  enum Kind { Plain, Surface, Bound };
  FakeRefresh(InterpretorTest& test, std::string name, Kind kind, bool atHead = false)
      : CIRefresh(test.interpreter, atHead), test(test), name(std::move(name)), kind(kind) {}
  void Refresh() override {
    dirty = false;
    test.log.push_back(name);
    if (onRefresh) onRefresh();
  }
  bool IsWindowBound() const override { return kind == Bound; }
  bool IsSurface() const override { return kind == Surface; }
  InterpretorTest& test;
  std::string name;
  Kind kind;
  std::function<void()> onRefresh;
};

TEST_F(InterpretorTest, RefreshOrder) {
  FakeRefresh window(*this, "window", FakeRefresh::Bound);
  FakeRefresh surface(*this, "surface", FakeRefresh::Surface);
  FakeRefresh plain(*this, "plain", FakeRefresh::Plain);
  FakeRefresh first(*this, "first", FakeRefresh::Plain, true);
  FakeRefresh clean(*this, "clean", FakeRefresh::Plain);
  clean.dirty = false;
  EXPECT_TRUE(interpreter.needsRefresh) << "everything new asks for its first refresh";
  interpreter.RefreshAll();
  EXPECT_EQ(log, (std::vector<std::string>{"first", "plain", "surface", "window"}));
  EXPECT_FALSE(interpreter.needsRefresh);
  log.clear();
  interpreter.RefreshAll();
  EXPECT_EQ(log, std::vector<std::string>()) << "nothing is dirty any more";
}

// A surface that is drawn on another: the one that waits is done in a later round.
TEST_F(InterpretorTest, SurfacesThatWaitFollowInRounds) {
  FakeRefresh c(*this, "c", FakeRefresh::Surface);
  FakeRefresh b(*this, "b", FakeRefresh::Surface);
  FakeRefresh a(*this, "a", FakeRefresh::Surface);
  FakeRefresh window(*this, "window", FakeRefresh::Bound);
  b.dirty = c.dirty = window.dirty = false;
  a.onRefresh = [&] { b.RequestRefresh(); };
  b.onRefresh = [&] { c.RequestRefresh(); };
  c.onRefresh = [&] { window.RequestRefresh(); };
  interpreter.RefreshAll();
  EXPECT_EQ(log, (std::vector<std::string>{"a", "b", "c", "window"}));
}

TEST_F(InterpretorTest, RefreshRoundsAreBounded) {
  std::vector<std::unique_ptr<FakeRefresh>> chain;
  for (int i = 0; i < 10; ++i) {
    chain.push_back(std::make_unique<FakeRefresh>(*this, std::to_string(i), FakeRefresh::Surface, true));
    chain.back()->dirty = i == 0;
  }
  for (size_t i = 0; i + 1 < chain.size(); ++i) {
    chain[i]->onRefresh = [&, i] { chain[i + 1]->RequestRefresh(); };
  }
  interpreter.RefreshAll();
  // The list runs from 9 down to 0, so that each round reaches one surface more: 0 itself, then four rounds.
  EXPECT_EQ(log, (std::vector<std::string>{"0", "1", "2", "3", "4"}));
  EXPECT_FALSE(interpreter.needsRefresh);
}

TEST_F(InterpretorTest, ASurfaceThatDirtiesItselfDoesNotHang) {
  FakeRefresh a(*this, "a", FakeRefresh::Surface);
  a.onRefresh = [&] { a.RequestRefresh(); };
  interpreter.RefreshAll();
  EXPECT_EQ(log, std::vector<std::string>{"a"});
}

TEST_F(InterpretorTest, RefreshSurvivesDeathInside) {
  auto victim = std::make_unique<FakeRefresh>(*this, "victim", FakeRefresh::Plain);
  FakeRefresh killer(*this, "killer", FakeRefresh::Plain, true);
  FakeRefresh last(*this, "last", FakeRefresh::Bound);
  killer.onRefresh = [&] {
    victim.reset();
    interpreter.RefreshAll();  // refused inside a refresh
  };
  interpreter.RefreshAll();
  EXPECT_EQ(log, (std::vector<std::string>{"killer", "last"}));
}

std::vector<int> FirstArguments(CInterpretor& interpreter) {
  std::vector<int> seen;
  uint32_t cursor = interpreter.events.First();
  while (const CEvent* event = interpreter.events.Step(cursor)) seen.push_back(event->args.at(0).data.integer);
  return seen;
}

TEST_F(InterpretorTest, UniqueEventsCollapse) {
  const BlockRecord f;
  const BlockRecord g;
  int keyA = 0;
  int keyB = 0;
  const auto with = [&](int n) { return std::vector<CValue>{interpreter.MakeValue(n)}; };
  interpreter.PostUniqueEvent(&f, &keyA, with(1));
  interpreter.PostUniqueEvent(&f, &keyB, with(2));
  interpreter.PostUniqueEvent(&g, &keyA, with(3));
  interpreter.PostEvent(&f, with(4));
  EXPECT_EQ(FirstArguments(interpreter), (std::vector<int>{1, 2, 3, 4}));
  interpreter.PostUniqueEvent(&f, &keyA, with(5));  // takes the place of the first
  EXPECT_EQ(FirstArguments(interpreter), (std::vector<int>{5, 2, 3, 4}));
  interpreter.PostEvent(&f, with(6));  // always appends
  EXPECT_EQ(FirstArguments(interpreter), (std::vector<int>{5, 2, 3, 4, 6}));
  interpreter.PostEvent(nullptr, with(7));
  interpreter.PostUniqueEvent(nullptr, &keyA, with(8));
  EXPECT_EQ(interpreter.events.Count(), 5u) << "an event without a function is none";
  EXPECT_EQ(interpreter.events.At(interpreter.nextEvent)->args.at(0).data.integer, 5);
}

TEST_F(InterpretorTest, AFullQueueRefuses) {
  const BlockRecord f;
  int key = 0;
  interpreter.eventLimit = 3;
  for (int i = 0; i < 2; ++i) interpreter.PostEvent(&f, {});
  interpreter.PostUniqueEvent(&f, &key, {});
  for (int i = 0; i < 2; ++i) {
    try {
      interpreter.PostEvent(&f, {});
      FAIL() << "error 61 expected";
    } catch (const CIError& error) {
      EXPECT_EQ(error.code, 61u);
    }
  }
  EXPECT_EQ(interpreter.events.Count(), 3u);
  interpreter.PostUniqueEvent(&f, &key, {});  // nothing is added: the queue may be full
  interpreter.Reset();
  EXPECT_EQ(interpreter.events.Count(), 0u);
  EXPECT_EQ(interpreter.nextEvent, 0u);
}

// A queued reference keeps an object, and the object's death reaches it.
TEST_F(InterpretorTest, QueuedReferencesAreCounted) {
  const BlockRecord f;
  auto* object = new CIBaseObjectVar(interpreter, CIBaseClassImpl::Listing::Listed);
  object->Create();
  interpreter.PostEvent(&f, {interpreter.MakeValue(static_cast<CIBaseClassImpl*>(object))});
  EXPECT_EQ(object->refCount, 1);
  interpreter.Collect();
  ASSERT_EQ(interpreter.ObjectsOfClass(CLASS_NONE).Count(), 1u);
  interpreter.DeleteObject(object);
  const CValue& argument = interpreter.events.At(interpreter.nextEvent)->args.at(0);
  EXPECT_EQ(argument.type, VT_INTEGER);
  EXPECT_EQ(argument.data.integer, 0);
}

// --- Collection ---

struct Mortal : CIBaseObjectVar {
  Mortal(InterpretorTest& test, std::string name)
      : CIBaseObjectVar(test.interpreter, Listing::Listed), test(test), name(std::move(name)) {
    Create();
  }
  void Destroy(bool final) override {
    if (!final) test.log.push_back(name);
    CIBaseObjectVar::Destroy(final);
  }
  void Refer(CIBaseClassImpl* other) { interpreter.AddVariable(*this, 1, 0)->SetObject(other); }
  InterpretorTest& test;
  std::string name;
};

using Log = std::vector<std::string>;

TEST_F(InterpretorTest, WhatLosesItsHolderDiesInTheOrderOfTheList) {
  const auto collected = [&] {
    log.clear();
    interpreter.Collect();
    return log;
  };
  CValue a(&interpreter), b(&interpreter), c(&interpreter);
  a.SetObject(new Mortal(*this, "a"));
  b.SetObject(new Mortal(*this, "b"));
  c.SetObject(new Mortal(*this, "c"));
  new Mortal(*this, "d");
  new Mortal(*this, "e");
  EXPECT_EQ(collected(), (Log{"e", "d"})) << "newest first";
  EXPECT_EQ(collected(), Log{});
  a.SetInt(0);
  c.SetInt(0);
  b.SetInt(0);
  b.SetObject(new Mortal(*this, "f"));
  EXPECT_EQ(collected(), (Log{"c", "b", "a"})) << "whatever lost its holder first";
  CIBaseClassImpl* f = b.data.object;
  b.SetInt(0);
  b.SetObject(f);
  EXPECT_EQ(collected(), Log{}) << "it has been taken up again";
  b.SetInt(0);
  interpreter.DeleteObject(f);
  EXPECT_EQ(collected(), Log{});
}

// The walk goes from the newest to the oldest: what it has passed waits for the next collection.
TEST_F(InterpretorTest, WhatADeathReleasesDiesAtOnceOnlyFurtherOn) {
  auto* oldest = new Mortal(*this, "oldest");
  auto* middle = new Mortal(*this, "middle");
  auto* newest = new Mortal(*this, "newest");
  newest->Refer(oldest);
  oldest->Refer(middle);
  interpreter.Collect();
  EXPECT_EQ(log, (Log{"newest", "oldest"}));
  interpreter.Collect();
  EXPECT_EQ(log, (Log{"newest", "oldest", "middle"}));
}

TEST_F(InterpretorTest, AnObjectAtWorkStaysUntilTheNextCollection) {
  auto* object = new Mortal(*this, "object");
  ++object->pins;
  interpreter.Collect();
  EXPECT_EQ(log, Log{});
  interpreter.Unpin(object);
  interpreter.Collect();
  EXPECT_EQ(log, Log{"object"});
}

// A program that makes and deletes without ever collecting keeps no list of the dead.
TEST_F(InterpretorTest, TheDeadAreForgotten) {
  CValue kept(&interpreter);
  kept.SetObject(new Mortal(*this, "kept"));
  for (int i = 0; i < 10000; ++i) interpreter.DeleteObject(new Mortal(*this, "gone"));
  log.clear();
  interpreter.Collect();
  EXPECT_EQ(log, Log{});
  kept.SetInt(0);
  interpreter.Collect();
  EXPECT_EQ(log, Log{"kept"});
}

// --- CArrayStore ---

class ArrayStoreTest : public InterpretorTest {
 protected:
  void Put(uint32_t index, int32_t number) {
    CValue value(&interpreter);
    value.SetInt(number);
    store.Store(index, value);
  }
  void Put(uint32_t index, double number) {
    CValue value(&interpreter);
    value.SetFloat(number);
    store.Store(index, value);
  }
  uint32_t At(int32_t i) { return store.Address(&i, 1); }
  const CValue* Get(uint32_t index) { return store.Element(index, scratch_); }
  MemoryBudget budget;
  CElementPool pool{&interpreter, &budget};
  CArrayStore store{&interpreter, pool, budget};

 private:
  CValue scratch_{&interpreter};
};

TEST_F(ArrayStoreTest, NumbersAreCompactUntilSomethingElseComes) {
  constexpr int32_t kCount = 10000;
  for (int32_t i = 0; i < kCount; ++i) Put(At(i), i);
  EXPECT_LE(budget.Used(), kCount * 6u);
  Put(5, 0.5);
  EXPECT_LE(budget.Used(), kCount * 12u);
  CValue* place = store.Place(7);
  ASSERT_NE(place, nullptr);
  for (int32_t i = kCount; i < 3 * kCount; ++i) Put(At(i), i);
  EXPECT_EQ(store.Place(7), place) << "growing moves no cell";
  place->SetInt(-7);
  EXPECT_EQ(Get(7)->GetInt(), -7);
  EXPECT_EQ(Get(5)->GetDouble(), 0.5);
  EXPECT_EQ(Get(6)->GetInt(), 6);
  EXPECT_EQ(store.Place(At(3 * kCount + 2)), nullptr) << "never assigned";
  EXPECT_EQ(Get(3 * kCount), nullptr);
  EXPECT_EQ(Get(UINT32_MAX), nullptr);
}

// A real may have any bits, also those that stand for something else in the compact form.
TEST_F(ArrayStoreTest, RealsKeepTheirBits) {
  const uint64_t patterns[] = {0x7FF8000000000000, 0xFFF8000000000000, 0xFFFB123456789ABC, 0xFFFC000000000001,
                               0xFFFD00001234ABC8, 0xFFFE000000000000, 0xFFFFFFFFFFFFFFFF, 0x8000000000000000};
  for (int round = 0; round < 2; ++round) {
    for (int32_t i = 0; i < 8; ++i) Put(At(i), std::bit_cast<double>(patterns[(i + round) % 8]));
    for (int32_t i = 0; i < 8; ++i) {
      const CValue* value = Get(static_cast<uint32_t>(i));
      ASSERT_NE(value, nullptr);
      EXPECT_EQ(value->type, VT_FLOAT);
      EXPECT_EQ(std::bit_cast<uint64_t>(value->data.real), patterns[(i + round) % 8]);
    }
  }
}

TEST_F(ArrayStoreTest, ShapesGrowWithTheirCellsAndHoles) {
  const auto at = [&](int32_t i, int32_t j, int32_t k) {
    const int32_t subscripts[] = {i, j, k};
    return store.Address(subscripts, 3);
  };
  at(1, 1, 1);
  for (int32_t n = 0; n < 8; ++n) {
    if (n != 3) Put(at(n & 1, n >> 1 & 1, n >> 2), n);
  }
  CValue* place = store.Place(at(1, 0, 1));
  at(4, 0, 0);
  at(0, 2, 3);
  for (int32_t n = 0; n < 8; ++n) {
    const CValue* value = Get(at(n & 1, n >> 1 & 1, n >> 2));
    ASSERT_EQ(value == nullptr, n == 3) << n;
    if (value) {
      EXPECT_EQ(value->GetInt(), n);
    }
  }
  EXPECT_EQ(store.Place(at(1, 0, 1)), place);
  EXPECT_EQ(store.ElementCount(), 5u * 3u * 4u);
}

// --- DirtyList ---

void ExpectDisjoint(const DirtyList& list) {
  const auto& boxes = list.Boxes();
  for (size_t i = 0; i < boxes.size(); ++i) {
    for (size_t j = i + 1; j < boxes.size(); ++j) {
      EXPECT_TRUE(boxes[i].Intersect(boxes[j]).IsEmpty()) << i << " and " << j;
    }
  }
}

TEST(DirtyListTest, Growth) {
  DirtyList list;
  list.Add({10, 10, 20, 20});
  list.Add({12, 12, 18, 18});  // inside
  EXPECT_EQ(list.Boxes(), (std::vector<Rect>{{10, 10, 20, 20}}));
  list.Add({20, 10, 30, 20});  // only touches
  EXPECT_EQ(list.Boxes().size(), 2u);
  list.Add({60, 50, 40, 40});  // corners in any order
  EXPECT_EQ(list.Boxes().back(), (Rect{40, 40, 60, 50}));
  list.Add({19, 15, 41, 45});  // joins all three
  EXPECT_EQ(list.Boxes(), (std::vector<Rect>{{10, 10, 60, 50}}));
  list.Clear();
  EXPECT_TRUE(list.IsEmpty());
}

// The union of two may reach a third that neither reached.
TEST(DirtyListTest, UnionsMeetOthers) {
  DirtyList list;
  list.Add({0, 0, 10, 10});
  list.Add({20, 0, 30, 10});
  list.Add({12, 12, 18, 40});
  list.Add({5, 5, 22, 8});
  ExpectDisjoint(list);
  EXPECT_EQ(list.Boxes().size(), 2u);
  list.Add({8, 9, 9, 13});
  EXPECT_EQ(list.Boxes(), (std::vector<Rect>{{0, 0, 30, 40}}));
}

TEST(DirtyListTest, AFullListFolds) {
  DirtyList list;
  for (int i = 0; i < 1024; ++i) list.Add({i % 32 * 10, i / 32 * 10, i % 32 * 10 + 5, i / 32 * 10 + 5});
  EXPECT_EQ(list.Boxes().size(), 1024u);
  list.Add({1000, 1000, 1010, 1010});
  EXPECT_EQ(list.Boxes(), (std::vector<Rect>{{0, 0, 315, 315}, {1000, 1000, 1010, 1010}}));
  // One that lies inside what the boxes span is swallowed by the fold.
  DirtyList inside;
  for (int i = 0; i < 1024; ++i) inside.Add({i % 32 * 10, i / 32 * 10, i % 32 * 10 + 5, i / 32 * 10 + 5});
  inside.Add({6, 6, 9, 9});
  EXPECT_EQ(inside.Boxes(), (std::vector<Rect>{{0, 0, 315, 315}}));
}

}  // namespace
}  // namespace vl
