// Whole programs by the plain walk and from prepared instructions, for what their short ways must leave as it is:
// which variable a name finds, what the slots hold behind an expression, and where an error stands.
#include <gtest/gtest.h>

#include "host/run.h"
#include "platform/headless/headless_platform.h"
#include "platform/memory_files.h"
#include "tools/project/project.h"

namespace vl {
namespace {

struct Outcome {
  std::string globals;
  std::string error;
};

Outcome RunSource(const char* source, bool plainWalk) {
  MemoryFileSystem files;
  EXPECT_TRUE(files.Add("walk.vlp", SingleSourceApplication(source, "walk.vlq")));
  HeadlessOptions options;
  options.files = &files;
  HeadlessPlatform platform(options);
  Run run(platform.services(), true);
  run.param.path = "walk.vlp";
  run.param.referenceWalker = plainWalk;
  run.Execute();
  return {run.globals, run.errorDetail};
}

struct ProgramCase {
  const char* name;
  const char* source;
  const char* globals;
};

constexpr ProgramCase kPrograms[] = {
    {"BlockVariablesAreMadeAnew", R"q(
r = 0;
For (i = 0; i < 3; i++) { y = i * 2; r = r * 10 + y; }
For (i = 0; i < 2; i++) { Var y = 7 + i; r = r * 10 + y; }
)q",
     R"q({"i":2,"r":2478})q"},
    {"TheNewestOfTwoLikeNamedIsFound", R"q(
r = 0;
For (i = 0; i < 3; i++) r = r * 10 + F(i, i + 1);
{ d = (d = 5); d = d + 1; r = r * 10 + d; }
Function F(a, a) { a = a + 0; Return a; }
)q",
     R"q({"i":3,"r":1236})q"},
    {"ALocalHidesAGlobalFromItsMakingOn", R"q(
g = 3;
r = F();
s = F();
Function F() {
  Var a = 0;
  For (k = 0; k < 3; k++) { a = a * 10 + g; Var g = 7 + k; }
  Return a;
}
)q",
     R"q({"g":3,"r":378,"s":378})q"},
    {"EveryCallHasItsOwnVariables", R"q(
r = 0; w = 0;
S(4);
f = Fact(10);
Function S(n) { Var m = n; If (n > 0) S(n - 1); r = r * 10 + m; w = w * 10 + n; }
Function Fact(n) { If (n <= 1) Return 1; Return n * Fact(n - 1); }
)q",
     R"q({"f":3628800,"r":1234,"w":1234})q"},
    {"AnObjectsOwnFunctionComesFirst", R"q(
o = New Make(4);
a = o.Get();
b = o.Twice();
o.Get = Other;
c = o.Twice();
d = Get();
Function Make(n) { This.n = n; This.Get = Get2; This.Twice = Twice2; }
Function Get2() { Return n; }
Function Twice2() { Return Get() * 2; }
Function Other() { Return 50; }
Function Get() { Return 1; }
)q",
     R"q({"a":4,"b":8,"c":100,"d":1,"o":{"object":""}})q"},
    {"OneNameTakesManyTypes", R"q(
c = 0; v = 1; t = "";
For (p = 0; p < 5; p++) {
  If (p == 2) v = "1";
  If (p == 3) v = 1.5;
  If (p == 4) v = 9;
  If (v < 2) c = c * 10 + p + 1;
  t = t + v;
  v;
}
For (f = 0.5; f < 3; f++) c = c * 10 + 9;
While (f > 1.0) f = f - 1;
n = "3"; k = 0;
For (i = 0; i < n; i++) k++;
)q",
     R"q({"c":1234999,"f":0.5,"i":3,"k":3,"n":"3","p":5,"t":"1111.59","v":9})q"},
    {"ElementsOfOneAndTwoDimensions", R"q(
a[2] = 1; a[0] = 2.5; a[1] = "x"; i = 2; b[1,1] = 4; b[0,0] = 3;
a[i]++; a[i] = a[i] + a[0]; a[i] += 2; r = b[1,1] * a[i]; i = 3; a[i] = i; i++; a[i] = a[3]; a[1] = a[i]; q = a; q[0] = 8; r2 = a[0];
u = (a[i] = 6) + a[i];
)q",
     R"q({"a":{"sizes":[5],"elements":[8,3,6.5,3,6]},"b":{"sizes":[2,2],"elements":[3,null,null,4]},"i":4,"q":{"sizes":[5],"elements":[8,3,6.5,3,6]},"r":26.0,"r2":8,"u":12})q"},
    {"MembersOfScriptObjects", R"q(
i = "a"; For (i = 0; i < 2; i++) { k[i] = i; s = k; }
 n = 0;  x = 5; x; If (x == 5) n = n - 1; 
If (x != "5") n = 5; If (n <= x) m = 1; If (x >= 5) m2 = 2;
 o = New P(); o.v = 1; o.v = o.v + 1; o.w = "t"; z = o.v * o.v + o.v; zz = o.w; o.l[2] = 4; y = o.l[2];  Function P() { This.k = 1; }
)q",
     R"q({"i":2,"m":1,"m2":2,"n":-1,"o":{"object":""},"x":5,"y":4,"z":6,"zz":"t"})q"},
    {"OperatorsKeepTheirOrderAndResults", R"q(
a = 3; x = 5; y = 6;
x = y = 9;
z = a++ + 4;
k = (a) + 1; m = a + 1 = 12;
e = 1 ? 4 : 5;
g = 7 % 2 * 3 - 1; l = 7 / 2; ll = 7.0 / 2; h = -7 % 3; sh = 1 << 33; an = 6 & 3 | 8; xo = 5 ^ 1; lo = 1 && 0.5; la = 0 || 0; ne = 1 != 1.0; ge = 2.5 >= 2;
mi = 0x80000000 / -1; mm = 0x80000000 % -1; sr = -8 >> 1;
j = 5; j += 2; j -= 0.5; j *= 4; j /= 2;
)q",
     R"q({"a":12,"an":2,"e":4,"g":2,"ge":1,"h":-1,"j":13.0,"k":5,"l":3,"la":0,"ll":3.5,"lo":1,"m":5,"mi":-2147483648,"mm":0,"ne":0,"sh":2,"sr":-4,"x":6,"xo":4,"y":9,"z":3})q"},
    {"AMemberWithoutAResultLeavesTheSlot", R"q(
a = 3; r = 0;
If (a < 7) r = Program.EnableEvents();
q = Program.EnableEvents();
For (i = 0; i < 2; i++) { }
s = Program.EnableEvents();
If (7 > a) t = Program.EnableEvents();
b[5] = 11; i = 5; c = b[i];
)q",
     R"q({"a":3,"b":{"sizes":[6],"elements":[null,null,null,null,null,11]},"c":11,"i":5,"q":0,"r":7,"s":2,"t":3})q"},
};

TEST(Walker, Programs) {
  for (const ProgramCase& c : kPrograms) {
    SCOPED_TRACE(c.name);
    for (const bool plainWalk : {true, false}) {
      const Outcome outcome = RunSource(c.source, plainWalk);
      EXPECT_EQ(outcome.error, "") << plainWalk;
      EXPECT_EQ(outcome.globals, c.globals) << plainWalk;
    }
  }
}

struct ErrorCase {
  const char* source;
  const char* error;  // without the source's name
};

constexpr ErrorCase kErrors[] = {
    {R"q(a[2] = 1; i = 1; r = a[i];)q", "1:26: error 41"},
    {R"q(o = New P(); o.Kill();
Function P() { This.Kill = K; }
Function K() { Delete This; This.x = 1; })q",
     "3:39: error 16"},
    {R"q(i = 1; r = 2 + i.x;)q", "1:18: error 35"},
    {R"q(a = 4;
b = a;
If (a < 9) {
  r = 1/0;
}
Function f(x) { Return x; })q",
     "4:10: error 111"},
    {R"q(a = 4;
b = a;
If (a < 9) {
  r = 5%0;
}
Function f(x) { Return x; })q",
     "4:10: error 111"},
    {R"q(a = 4;
b = a;
If (a < 9) {
  r = 1.5/0;
}
Function f(x) { Return x; })q",
     "4:12: error 111"},
    {R"q(a = 4;
b = a;
If (a < 9) {
  r = "a"*2;
}
Function f(x) { Return x; })q",
     "4:12: error 12"},
    {R"q(a = 4;
b = a;
If (a < 9) {
  r = f + 1;
}
Function f(x) { Return x; })q",
     "4:12: error 18"},
    {R"q(a = 4;
b = a;
If (a < 9) {
  r = f < 2;
}
Function f(x) { Return x; })q",
     "4:12: error 18"},
    {R"q(a = 4;
b = a;
If (a < 9) {
  r = new1 + 1;
}
Function f(x) { Return x; })q",
     "4:15: error 41"},
    {R"q(a = 4;
b = a;
If (a < 9) {
  r = 1 + new1;
}
Function f(x) { Return x; })q",
     "4:15: error 41"},
    {R"q(a = 4;
b = a;
If (a < 9) {
  r = new1++;
}
Function f(x) { Return x; })q",
     "4:13: error 41"},
    {R"q(a = 4;
b = a;
If (a < 9) {
  r = 1 += 2;
}
Function f(x) { Return x; })q",
     "4:13: error 41"},
    {R"q(a = 4;
b = a;
If (a < 9) {
  r = g(1);
}
Function f(x) { Return x; })q",
     "4:7: no function g"},
    {R"q(a = 4;
b = a;
If (a < 9) {
  r = Return;
}
Function f(x) { Return x; })q",
     "4:7: error 16"},
    {R"q(a = 4;
b = a;
If (a < 9) {
  r = a.b.c;
}
Function f(x) { Return x; })q",
     "4:9: error 35"},
    {R"q(a = 4;
b = a;
If (a < 9) {
  r = (a)(b);
}
Function f(x) { Return x; })q",
     "4:10: error 16"},
    {R"q(a = 4;
While (zz < 4) a++;)q",
     "2:14: error 41"},
    {R"q(a = 4;
For (i = 0; i < q; i++) a++;)q",
     "2:18: error 41"},
    {R"q(f(f(1),
 h(2));
Function f(x) { Return x; })q",
     "2:2: no function h"},
    {R"q(f(1);
Function f(x) { r = x; 
 x = x +
 y; })q",
     "4:3: error 41"},
};

TEST(Walker, ErrorsStandWhereTheWalkerIs) {
  for (const ErrorCase& c : kErrors) {
    SCOPED_TRACE(c.source);
    for (const bool plainWalk : {true, false}) {
      const std::string error = RunSource(c.source, plainWalk).error;
      EXPECT_EQ(error.substr(error.find("walk:") == 0 ? error.find("/walk:") + 6 : 0), c.error) << plainWalk;
    }
  }
}

}  // namespace
}  // namespace vl
