#include "tests/walkers/program_writer.h"

namespace vl {

namespace {
constexpr int kFunctions = 5;
constexpr int kConstructors = 2;
const std::vector<std::string> kGlobals = {"a", "b", "c", "d", "s", "i9"};
const std::vector<std::string> kLocals = {"x", "y", "z", "a", "u"};
const std::vector<std::string> kArrays = {"v", "w", "q"};
const std::vector<std::string> kObjects = {"o", "p"};
const std::vector<std::string> kMembers = {"m", "n", "k"};
const std::vector<std::string> kOperators = {"+",  "-", "*",  "/", "%",  "&",  "|",  "^",  "<<",
                                             ">>", "<", "<=", ">", ">=", "==", "!=", "&&", "||"};
const std::vector<std::string> kCompound = {"+=", "-=", "*=", "&=", "|=", "^="};
const std::vector<std::string> kComparisons = {"<", "<=", ">", ">=", "==", "!="};
}  // namespace

void CProgramWriter::Line(const std::string& text) {
  out_.append(static_cast<size_t>(indent_) * 2, ' ').append(text).append("\n");
}

std::string CProgramWriter::Name() {
  if (Chance(wild_) && Chance(10)) return Chance(50) ? "t" : "unset";
  if (inFunction_ && Chance(60)) return Pick(kLocals);
  return Pick(kGlobals);
}

std::string CProgramWriter::ObjectExpression() {
  if (Chance(15)) return "New C" + std::to_string(Below(kConstructors)) + "(" + Expression(1) + ")";
  if (inFunction_ && Chance(20)) return "This";
  return Pick(kObjects);
}

std::string CProgramWriter::TextExpression(int depth) {
  switch (Below(8)) {
    case 5:
      return "(t + t.SubString(0, 2))";
    case 6:
      return "t.CharAt(" + Primary(depth - 1) + ")";
    case 7:
      return "(" + Primary(0) + " + t)";
    case 0:
      return "\"" + std::string(1, static_cast<char>('a' + Below(4))) + std::to_string(Below(30)) + "\"";
    case 1:
      return "(t + " + Primary(depth - 1) + ")";
    case 2:
      return "t.SubString(" + std::to_string(Below(3)) + ", " + std::to_string(Below(4)) + ")";
    case 3:
      return "(\"n\" + " + Primary(depth - 1) + ").ToUpperCase()";
    default:
      return "t";
  }
}

std::string CProgramWriter::Arguments(int depth) {
  std::string list;
  const uint32_t count = Chance(wild_) ? Below(4) : 3;
  for (uint32_t i = 0; i < count; ++i) {
    if (i) list += ", ";
    if (!Chance(wild_) || Chance(70)) list += Expression(depth - 1);
  }
  return list;
}

std::string CProgramWriter::Call(int depth) {
  return "F" + std::to_string(Below(kFunctions)) + "(" + Arguments(depth) + ")";
}

std::string CProgramWriter::Primary(int depth) {
  const uint32_t kind = Below(depth > 0 ? 22 : 8);
  switch (kind) {
    case 0:
    case 1:
    case 2:
      return Name();
    case 3:
    case 4:
      return std::to_string(Below(12));
    case 5:
      return std::to_string(Below(9)) + "." + std::to_string(Below(10));
    case 6:
      return Pick(kGlobals);
    case 7:
      return Pick(kArrays) + "[" + std::to_string(Below(4)) + "]";
    case 8:
      return "(" + Expression(depth - 1) + ")";
    case 9:
      return "-" + Name();
    case 10:
      return "!" + Name();
    case 11:
      return Pick(kArrays) + "[" + Name() + " & 3]";
    case 12:
      return Pick(kObjects) + "." + Pick(kMembers);
    case 13:
      return "Abs(" + Expression(depth - 1) + ")";
    case 14:
    case 15:
      return blocks_ < 4 && budget_ > 0 ? Call(depth) : std::to_string(Below(5));
    case 16:
      return "(" + Expression(depth - 1) + " ? " + Expression(depth - 1) + " : " + Expression(depth - 1) + ")";
    case 17:
      return Pick(kObjects) + ".f(" + Arguments(depth) + ")";
    case 18:
      switch (Below(4)) {
        case 0:
          return "t.IndexOf(t.SubString(" + std::to_string(Below(3)) + ", 1))";
        case 1:
          return "t.GetAscii(" + Primary(depth - 1) + ")";
        case 2:
          return "t.IndexOf(" + Primary(depth - 1) + ", " + Name() + ")";
        default:
          return "t.Length()";
      }
    case 19:
      return "Max(" + Expression(depth - 1) + ", " + Expression(depth - 1) + ")";
    case 20:
      if (Chance(wild_)) return "Probe.Nothing(" + Arguments(depth) + ")";
      return "(" + TextExpression(depth) + ").Length()";
    default:
      if (Chance(wild_)) return "(" + Name() + " = " + Expression(depth - 1) + ")";
      if (Chance(wild_)) return "probe.Nothing()";
      if (Chance(wild_)) return TextExpression(depth);
      if (Chance(wild_)) return "g.h[" + Expression(depth - 1) + "]";
      return "e[" + std::to_string(Below(2)) + ", " + Name() + " & 1]";
  }
}

std::string CProgramWriter::Expression(int depth) {
  std::string text = Primary(depth);
  const uint32_t more = depth > 0 ? Below(3) : 0;
  for (uint32_t i = 0; i < more; ++i) {
    const std::string op = Pick(kOperators);
    // Division by what isn't plainly a number above 0 ends most programs.
    if ((op == "/" || op == "%") && !Chance(wild_)) {
      text += " " + op + " " + std::to_string(1 + Below(7));
    } else {
      text += " " + op + " " + Primary(depth - 1);
    }
  }
  if (Chance(wild_) && Chance(30)) text += " ? " + Primary(0) + " : " + Primary(0);
  return text;
}

std::string CProgramWriter::Condition() {
  if (Chance(8)) return "t " + Pick(kComparisons) + " " + (Chance(50) ? Primary(1) : TextExpression(1));
  if (Chance(70)) return Name() + " " + Pick(kComparisons) + " " + (Chance(50) ? Name() : std::to_string(Below(9)));
  return Expression(2);
}

std::string CProgramWriter::Target() {
  switch (Below(10)) {
    case 0:
      return Pick(kArrays) + "[" + std::to_string(Below(5)) + "]";
    case 1:
      return Pick(kArrays) + "[" + Name() + " & 3]";
    case 2:
      return Pick(kObjects) + "." + Pick(kMembers);
    case 3:
      return Chance(wild_) ? "(" + Name() + ")" : Name();
    case 4:
      return Chance(wild_) ? "This." + Pick(kMembers) : "e[" + Name() + " & 1, " + std::to_string(Below(3)) + "]";
    case 5:
      return Chance(20) ? "new" + std::to_string(Below(3)) : Name();
    case 6:
      return Chance(20) ? "nw" + std::to_string(Below(3)) + "[" + Name() + " & 3]" : Name();
    default:
      return Name();
  }
}

void CProgramWriter::Assignment() {
  switch (Below(18)) {
    case 14:
    case 15:
      ElementStatement();
      return;
    case 16:
      // Not a text that grows without end.
      Line("t = t.SubString(0, 30);");
      Line("t = t + " + (Chance(70) ? Primary(1) : TextExpression(1)) + ";");
      return;
    case 17:
      Line(Pick(kObjects) + "." + Pick(kMembers) + " = " + Pick(kObjects) + "." + Pick(kMembers) + " " +
           Pick(kOperators) + " " + Primary(1) + (Chance(50) ? " * " + Primary(1) : "") + ";");
      return;
    case 0:
      Line(Target() + "++;");
      return;
    case 1:
      Line(Target() + "--;");
      return;
    case 2:
      Line(Target() + " " + Pick(kCompound) + " " + Expression(2) + ";");
      return;
    case 3:
      Line("Var " + Name() + " = " + Expression(2) + ";");
      return;
    case 4:
      Line("t = " + TextExpression(2) + ";");
      return;
    case 5:
      Line(Pick(kObjects) + " = " +
           (Chance(50) ? "New C" + std::to_string(Below(kConstructors)) + "(" + Expression(1) + ")" : Pick(kObjects)) +
           ";");
      return;
    case 6:
      if (Chance(wild_)) {
        Line(Target() + " = " + Name() + " = " + Expression(1) + ";");
        return;
      }
      [[fallthrough]];
    default:
      Line(Target() + " = " + Expression(3) + ";");
      return;
  }
}

// Arrays of numbers and of anything: holes, other kinds, places that outlive what found them.
void CProgramWriter::ElementStatement() {
  const std::string array = Pick(kArrays);
  const std::string element = array + "[" + (Chance(50) ? std::to_string(Below(5)) : Name() + " & 3") + "]";
  switch (Below(13)) {
    case 0:
      Line(array + "[" + std::to_string(Below(9)) + "] = " + Expression(1) + ";");
      return;
    case 1:
      Line(element + " = " + TextExpression(1) + ";");
      return;
    case 2:
      Line(element + " = " + Pick(kObjects) + ";");
      return;
    case 3:
      Line(element + " = " + Pick(kArrays) + "[" + std::to_string(Below(4)) + "] = " + Expression(1) + ";");
      return;
    case 4:
      Line(element + " - 1 = " + Expression(1) + ";");
      return;
    case 5:
      Line(element + " " + Pick(kCompound) + " " + (Chance(50) ? Call(1) : Primary(1)) + ";");
      return;
    case 6:
      if (Chance(wild_)) {
        Line(element + " = (" + array + " = " + Primary(1) + ");");
      } else {
        Line(element + " = 1 << 31;");
      }
      return;
    case 7:
      Line("nw" + std::to_string(Below(3)) + "[" + std::to_string(Below(3)) + "] = " + Primary(1) + ";");
      return;
    case 8:
      Line("e[" + Name() + " & 1, " + Name() + " & 1] " + (Chance(50) ? "=" : Pick(kCompound)) + " " + Expression(1) +
           ";");
      return;
    case 9:
      Line("e[" + Name() + " & 1, " + std::to_string(Below(2)) + "]++;");
      return;
    case 10:
      Line(element + " = " + Name() + " " + Pick(kOperators) + " " + Name() + ";");
      return;
    case 11:
      Line("g.h[" + std::to_string(Below(4)) + "] " + (Chance(50) ? "=" : "+=") + " " + Primary(1) + ";");
      return;
    default:
      Line(Name() + " = " + element + " " + Pick(kOperators) + " " + Primary(1) + ";");
      return;
  }
}

void CProgramWriter::Loop() {
  const std::string counter = "i" + std::to_string(loops_);
  ++loops_;
  ++blocks_;
  const std::string limit = std::to_string(1 + Below(blocks_ > 2 ? 4 : 9));
  const bool wasInSwitch = inSwitch_;
  inSwitch_ = false;
  switch (Below(4)) {
    case 0:
      Line(counter + " = 0;");
      Line("While (" + counter + " < " + limit + ") {");
      ++indent_;
      Line(counter + "++;");
      Block(2);
      --indent_;
      Line("}");
      break;
    case 1:
      Line("For (" + counter + " = " + limit + "; " + counter + " > 0; " + counter + " = " + counter + " - 1) {");
      ++indent_;
      Block(2);
      --indent_;
      Line("}");
      break;
    case 2:
      Line("For (" + counter + " = 0; " + counter + " < " + limit + "; " + counter + "++)");
      ++indent_;
      Assignment();
      --indent_;
      break;
    default:
      Line("For (" + counter + " = 0; " + counter + " < " + limit + "; " + counter + "++) {");
      ++indent_;
      Block(3);
      --indent_;
      Line("}");
      break;
  }
  inSwitch_ = wasInSwitch;
  --blocks_;
  --loops_;
}

void CProgramWriter::Choice() {
  ++blocks_;
  if (Chance(25)) {
    const bool wasInSwitch = inSwitch_;
    inSwitch_ = true;
    Line("Switch (" + Expression(1) + ") {");
    const uint32_t labels = 1 + Below(3);
    for (uint32_t l = 0; l < labels; ++l) {
      Line(Chance(20) && l == 0 ? "Default:" : "Case " + (Chance(80) ? std::to_string(Below(4)) : Name()) + ":");
      ++indent_;
      Block(1);
      if (Chance(60)) Line("Break;");
      --indent_;
    }
    Line("}");
    inSwitch_ = wasInSwitch;
  } else {
    Line("If (" + Condition() + ")" + (Chance(60) ? " {" : " { ;"));
    ++indent_;
    Block(2);
    --indent_;
    if (Chance(40)) {
      Line("} Else " + (Chance(30) ? "If (" + Condition() + ") {" : std::string("{")));
      ++indent_;
      Block(2);
      --indent_;
    }
    Line("}");
  }
  --blocks_;
}

void CProgramWriter::Statement() {
  if (--budget_ < 0) return;
  switch (Below(24)) {
    case 0:
    case 1:
      if (blocks_ < 4) Loop();
      return;
    case 2:
    case 3:
    case 4:
      if (blocks_ < 4) Choice();
      return;
    case 5:
      Line(Call(2) + ";");
      return;
    case 6:
      Line(Pick(kObjects) + ".f(" + Arguments(2) + ");");
      return;
    case 7:
      if (inFunction_ && Chance(50)) {
        Line("Return " + (Chance(80) ? Expression(2) : std::string()) + ";");
      } else {
        Assignment();
      }
      return;
    case 8:
      if (loops_ > 0 && !inSwitch_ && Chance(60)) {
        Line(Chance(50) ? "If (" + Condition() + ") Break;" : "If (" + Condition() + ") Continue;");
      } else {
        Assignment();
      }
      return;
    case 9:
      Line("Post(E" + std::to_string(Below(3)) + ", " + Expression(1) + ");");
      return;
    case 10:
      if (Chance(30)) {
        Line("Delete " + Pick(kObjects) + ";");
      } else {
        Line("Probe.Collect();");
      }
      return;
    case 11:
      if (Chance(wild_)) {
        Line("Probe.Fail(" + std::to_string(20 + Below(5)) + ");");
      } else {
        Line("{");
        ++blocks_;
        ++indent_;
        Block(2);
        --indent_;
        --blocks_;
        Line("}");
      }
      return;
    case 12:
      if (wild_ > 4 && Chance(50)) {
        Line("Program.OnError = " + std::string(Chance(80) ? "OnFail" : "0") + ";");
      } else {
        Line("Probe.OnPing = " + std::string(Chance(80) ? "E" + std::to_string(Below(3)) : "0") + ";");
      }
      return;
    case 13:
      Line("Probe.Ping();");
      return;
    case 14:
      if (Chance(wild_)) {
        Line(Expression(2) + ";");
      } else {
        Line("Serve();");
      }
      return;
    default:
      Assignment();
      return;
  }
}

void CProgramWriter::Block(int statements) {
  const uint32_t count = 1 + Below(static_cast<uint32_t>(statements) + 1);
  for (uint32_t i = 0; i < count; ++i) Statement();
}

void CProgramWriter::Function(int n) {
  static const char* const kHeads[] = {"(x)", "(x, y)", "()", "(x, y, z)", ""};
  Line("Function F" + std::to_string(n) + kHeads[n] + " {");
  ++indent_;
  // The functions call one another: a depth ends that.
  Line("If (deep > 3) Return " + std::to_string(n) + ";");
  Line("deep++;");
  inFunction_ = true;
  if (n == 2 || n == 4) Line("a = a + 1;");
  if (n == 2 || n == 4) Line("Var x = " + std::to_string(n) + ";");
  if (n != 1 && n != 3) Line("y = 3;");
  if (n != 3) Line("z = " + Pick(kGlobals) + ";");
  if (Chance(60)) Line("Var u = " + std::to_string(Below(5)) + ";");
  budget_ = 7;
  Block(4);
  inFunction_ = false;
  Line("deep--;");
  Line("Return x;");
  --indent_;
  Line("}");
}

void CProgramWriter::Constructor(int n) {
  Line("Function C" + std::to_string(n) + "(x) {");
  ++indent_;
  Line("This.m = x; This.n = " + std::to_string(n) + "; This.k = 2.5; This.f = " + (n ? "Method" : "F1") + ";");
  if (n) Line("This.h[3] = 1; This.h[0] = x;");
  --indent_;
  Line("}");
}

std::string CProgramWriter::Write() {
  wild_ = Chance(30) ? 0 : 1 + Below(12);
  Line(
      "a = 1; b = 2; c = 3.5; d = 0; s = 7; t = \"text\"; deep = 0; fails = 0; trail = \"\"; u = 4; i9 = 2; x = 1; y = "
      "2; z = 3;");
  Line("v[4] = 0; v[0] = 1; v[1] = 2; v[2] = 3; v[3] = 4; w[3] = 9; w[0] = 8; w[1] = 1.5; w[2] = 4; w[4] = 2;");
  Line("q = v; e[1, 1] = 1; e[0, 0] = 2; e[1, 0] = 3; e[0, 1] = 4;");
  Line("o = New C0(1); p = New C1(2); g = New C1(5); probe = New Probe();");
  budget_ = 30;
  while (budget_ > 0) Statement();
  for (int n = 0; n < kFunctions; ++n) Function(n);
  for (int n = 0; n < kConstructors; ++n) Constructor(n);
  Line("Function Method(x, y) { m = m + 1; If (x == 3) k = y; n = F2(); Return m + n; }");
  Line("Function E0(x) { trail = trail + \"A\" + x; }");
  Line("Function E1(x, y) { trail = trail + \"B\"; d = d + 1; For (ev = 0; ev < 3; ev++) { r1 = ev; } }");
  Line("Function E2(b) { trail = trail + \"C\" + b; b = 5; a = a + 1; Return b; }");
  Line("Function OnFail(code, text, source, column, line) { fails++; trail = trail + \"!\" + code + \":\" + line; }");
  return std::move(out_);
}

}  // namespace vl
