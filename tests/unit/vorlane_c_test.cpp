// The embedding interface, used as an embedder uses it.
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <tuple>

#include "host/appfile/app_part.h"
#include "host/appfile/class_names.h"
#include "host/appfile/writer.h"
#include "include/vorlane.h"
#include "interpreter/class_ids.h"
#include "tools/project/project.h"

namespace vl {
namespace {

using nlohmann::json;
using Clock = std::chrono::steady_clock;

struct Destroy {
  void operator()(vl_player* player) const { vl_destroy(player); }
};
using PlayerPtr = std::unique_ptr<vl_player, Destroy>;

vl_options Options(vl_backend backend = VL_BACKEND_HEADLESS, vl_clock clock = VL_CLOCK_DEFAULT) {
  vl_options options;
  vl_options_init(&options);
  options.backend = backend;
  options.clock = clock;
  options.keep_globals = 1;
  return options;
}

PlayerPtr Create(const vl_options& options) {
  char error[200] = "";
  PlayerPtr player(vl_create(&options, error, sizeof error));
  EXPECT_NE(player, nullptr) << error;
  return player;
}

void SetSource(vl_player* player, const std::string& text) {
  const std::string bytes = SingleSourceApplication(text, "main.vlq");
  ASSERT_EQ(vl_set_bytes(player, "main.vlp", bytes.data(), bytes.size()), 1);
}

// A player with a program, not started.
PlayerPtr WithSource(const std::string& text, const vl_options& options = Options()) {
  PlayerPtr player = Create(options);
  SetSource(player.get(), text);
  return player;
}

vl_result RunToEnd(vl_player* player) {
  EXPECT_EQ(vl_run(player), 1);
  EXPECT_EQ(vl_wait(player, -1), VL_ENDED);
  return vl_get_result(player);
}

json Globals(const vl_player* player) { return json::parse(vl_globals(player)); }

json GlobalsOf(const std::string& text, const vl_options& options = Options()) {
  PlayerPtr player = WithSource(text, options);
  EXPECT_EQ(RunToEnd(player.get()), VL_OK) << vl_error(player.get()) << vl_error_detail(player.get());
  return Globals(player.get());
}

// An application whose part and source elements have names of their own.
std::string Application(const std::string& part, const std::vector<std::pair<std::string, std::string>>& sources) {
  ApplicationModel model;
  model.version = kVersionNewest;
  model.settings.emplace();
  model.settings->hasClassTable = true;
  model.settings->classNames = AllClassNames();
  PartModel p;
  p.header.hasHeader = true;
  p.header.name = part;
  BankModel bank;
  bank.type = kBankSource;
  bank.name = "bank";
  bank.version = kBankVersion2;
  for (const auto& [name, text] : sources) {
    ElementModel e;
    e.name = name;
    e.body.bytes = text;
    bank.elements.push_back(e);
  }
  p.banks.push_back(bank);
  model.parts.push_back(p);
  WrittenApplication written = WriteApplication(model, "main");
  EXPECT_EQ(written.error, "");
  return written.files["main"];
}

// --- A run ---

TEST(VorlaneC, RunsAProgramFromBytes) {
  PlayerPtr player = WithSource("x = 6 * 7; t = \"done\"; Function F { }");
  EXPECT_EQ(vl_wait(player.get(), 0), VL_IDLE);
  EXPECT_EQ(RunToEnd(player.get()), VL_OK);
  EXPECT_STREQ(vl_error(player.get()), "");
  EXPECT_STREQ(vl_error_detail(player.get()), "");
  EXPECT_EQ(Globals(player.get()), (json{{"x", 42}, {"t", "done"}}));
  EXPECT_EQ(vl_wait(player.get(), 0), VL_ENDED);
}

TEST(VorlaneC, GlobalsOfEveryKind) {
  const json globals = GlobalsOf(
      "Whole = -7; third = 1.0 / 4; big = 1e300 * 1e10; small = -big; none = big - big; two = 2.0;"
      "text = \"q\\\"; high = GetChar(233) + GetChar(9); a[1, 2] = 5; a[0, 0] = \"e\"; o = New Thing(); f = New Font();"
      "Function Thing() { This.x = 1; }"
      "gone = New Thing(); Delete gone; self[0] = 1; self[1] = self;");
  EXPECT_EQ(globals.at("whole"), -7);
  EXPECT_TRUE(globals.at("two").is_number_float());
  EXPECT_EQ(globals.at("third"), 0.25);
  EXPECT_EQ(globals.at("big"), "inf");
  EXPECT_EQ(globals.at("small"), "-inf");
  EXPECT_EQ(globals.at("none"), "nan");
  EXPECT_EQ(globals.at("text"), "q\\");
  EXPECT_EQ(globals.at("high"), "\xC3\xA9\t");
  EXPECT_EQ(globals.at("a"), json::parse(R"({"sizes":[2,3],"elements":["e",null,null,null,null,5]})"));
  EXPECT_EQ(globals.at("o"), json::parse(R"({"object":""})"));
  EXPECT_EQ(globals.at("f"), json::parse(R"({"object":"Font"})"));
  EXPECT_EQ(globals.at("gone"), 0);
  EXPECT_EQ(globals.at("self").at("elements").at(1), nullptr);
  EXPECT_FALSE(globals.contains("thing"));
}

TEST(VorlaneC, GlobalsAreKeptOnlyWhenAsked) {
  vl_options options = Options();
  options.keep_globals = 0;
  PlayerPtr player = WithSource("x = 1;", options);
  EXPECT_EQ(RunToEnd(player.get()), VL_OK);
  EXPECT_STREQ(vl_globals(player.get()), "");
}

TEST(VorlaneC, ParametersAndCommandLine) {
  PlayerPtr player = WithSource(
      "whole = GetCommandLine(); n = GetNArguments(); second = GetArgument(1); a = GetParamValue(\"a\");"
      "b = GetParamValue(\"b\"); list = GetParamList();");
  EXPECT_EQ(vl_set_parameter(player.get(), "a", "first"), 1);
  EXPECT_EQ(vl_set_parameter(player.get(), "b", "\xE9"), 1);
  EXPECT_EQ(vl_set_parameter(player.get(), "a", "hidden by the first"), 1);
  EXPECT_EQ(vl_set_command_line(player.get(), "one \"two words\" three"), 1);
  ASSERT_EQ(RunToEnd(player.get()), VL_OK) << vl_error(player.get());
  const json globals = Globals(player.get());
  EXPECT_EQ(globals.at("whole"), "one \"two words\" three");
  EXPECT_EQ(globals.at("n"), 3);
  EXPECT_EQ(globals.at("second"), "two words");
  EXPECT_EQ(globals.at("a"), "first");
  EXPECT_EQ(globals.at("b"), "\xC3\xA9");
  EXPECT_EQ(globals.at("list").at("elements"), (json{"a", "b", "a", ""}));
}

TEST(VorlaneC, RunsAFileAndFindsWhatLiesBesideIt) {
  namespace fs = std::filesystem;
  const fs::path folder = fs::temp_directory_path() / ("vl-c-test-" + std::to_string(getpid()));
  fs::create_directories(folder);
  const std::string bytes = SingleSourceApplication("x = 1;", "main.vlq");
  std::ofstream(folder / "app.vlp", std::ios::binary) << bytes;
  PlayerPtr player = Create(Options());
  EXPECT_EQ(vl_set_file(player.get(), (folder / "app.vlp").c_str()), 1);
  EXPECT_EQ(RunToEnd(player.get()), VL_OK) << vl_error_detail(player.get());
  EXPECT_EQ(Globals(player.get()), (json{{"x", 1}}));
  fs::remove_all(folder);
}

TEST(VorlaneC, SeedMakesRandomNumbersRepeat) {
  const auto sequence = [](uint32_t seed) {
    vl_options options = Options();
    options.has_seed = 1;
    options.seed = seed;
    return GlobalsOf("t = \"\"; For (i = 0; i < 8; i++) t += Random(1000) + \" \";", options).at("t");
  };
  EXPECT_EQ(sequence(5), sequence(5));
  EXPECT_NE(sequence(5), sequence(6));
}

TEST(VorlaneC, MaxTimeStopsAsTheHostWould) {
  vl_options options = Options();
  options.max_time_ms = 3000;
  const json globals = GlobalsOf("n = 0; While (1) { Wait(100); n++; }", options);
  EXPECT_GE(globals.at("n"), 28);
  EXPECT_LE(globals.at("n"), 31);
}

// --- Errors ---

struct ErrorCase {
  const char* part;
  const char* element;
  const char* text;
  const char* error;
  const char* detail;  // how the detail begins
};

TEST(VorlaneC, ErrorsAreTitleAndText) {
  const ErrorCase cases[] = {
      {"part", "source", "x = 1;\n\n\n\n\n\n\n\n\n\n\ny = = 2;\n", "part - source: Error #16 at line 12.",
       "part://bank/source:12:"},
      {"part", "source.main", "x = 1 / 0;", "part - source: Error #111 at line 1.", "part://bank/source.main:1:"},
      {"My Game", "start", "\r\n\r\n  Undefined();", "My Game - start: Error #42 at line 3.",
       "My Game://bank/start:3:3:"},
      {"p", "s", "Function F { x = nothing; }\rF();", "p - s: Error #41 at line 1.", "p://bank/s:1:"},
      {"p", "s", "{", "p - s: Error #3 at line 1.", "p://bank/s:1:"},
      {"p", "s", "a = \"x\";\nb = a * 2;", "p - s: Error #12 at line 2.", "p://bank/s:2:"},
  };
  for (const ErrorCase& c : cases) {
    const std::string bytes = Application(c.part, {{c.element, c.text}});
    PlayerPtr player = Create(Options());
    ASSERT_EQ(vl_set_bytes(player.get(), "main.vlp", bytes.data(), bytes.size()), 1);
    EXPECT_EQ(RunToEnd(player.get()), VL_ERROR) << c.text;
    EXPECT_STREQ(vl_error(player.get()), c.error) << c.text;
    EXPECT_EQ(std::string(vl_error_detail(player.get())).substr(0, std::string(c.detail).size()), c.detail);
  }
}

// A place in the program has eight bits for its source.
TEST(VorlaneC, TwoHundredFiftySixSources) {
  const auto run = [](const std::string& text) {
    std::vector<std::pair<std::string, std::string>> sources = {{"main", text}};
    for (int i = 1; i < 300; ++i) {
      const std::string n = std::to_string(i);
      sources.emplace_back("s" + n,
                           "\nFunction F" + n + "() { Return " + n + "; }\nFunction G" + n + "() { x = 1 / 0; }");
    }
    const std::string bytes = Application("p", sources);
    PlayerPtr player = Create(Options());
    EXPECT_EQ(vl_set_bytes(player.get(), "main.vlp", bytes.data(), bytes.size()), 1);
    const vl_result result = RunToEnd(player.get());
    return std::string(result == VL_OK ? vl_globals(player.get()) : vl_error(player.get()));
  };
  EXPECT_EQ(run("x = F1() + F255();"), "{\"x\":256}");
  EXPECT_EQ(run("x = F256();"), "p - main: Error #42 at line 1.");
  EXPECT_EQ(run("G255();"), "p - s255: Error #111 at line 3.");
}

TEST(VorlaneC, GlobalsTellHowFarAFailedProgramCame) {
  PlayerPtr player = WithSource("x = 1; y = 1 / 0; z = 1;");
  EXPECT_EQ(RunToEnd(player.get()), VL_ERROR);
  EXPECT_EQ(Globals(player.get()), (json{{"x", 1}}));
}

TEST(VorlaneC, UnreadableApplications) {
  const std::string good = SingleSourceApplication("x = 1;", "main.vlq");
  const std::string cases[] = {
      "", "x", "no application at all", std::string(1000, '\0'), good.substr(0, good.size() / 2), good.substr(0, 9)};
  for (const std::string& bytes : cases) {
    PlayerPtr player = Create(Options());
    ASSERT_EQ(vl_set_bytes(player.get(), "bad.vlp", bytes.data(), bytes.size()), 1);
    EXPECT_EQ(RunToEnd(player.get()), VL_UNREADABLE) << bytes.size();
    EXPECT_STREQ(vl_error(player.get()), "");
    EXPECT_STRNE(vl_error_detail(player.get()), "");
    EXPECT_EQ(std::string(vl_error_detail(player.get())).find('\n'), std::string::npos);
    int32_t width = -1;
    EXPECT_EQ(vl_frame(player.get(), nullptr, 0, &width, nullptr), 0);
  }
  PlayerPtr player = Create(Options());
  EXPECT_EQ(vl_set_file(player.get(), "/nowhere/at/all.vlp"), 1);
  EXPECT_EQ(RunToEnd(player.get()), VL_UNREADABLE);
}

// --- Stopping ---

struct StopCase {
  const char* name;
  vl_backend backend;
  vl_clock clock;
  const char* text;
};

class VorlaneCStop : public testing::TestWithParam<std::tuple<int, int>> {};

constexpr std::tuple<vl_backend, vl_clock> kClocks[] = {{VL_BACKEND_HEADLESS, VL_CLOCK_REAL},
                                                        {VL_BACKEND_EMBED, VL_CLOCK_DEFAULT},
                                                        {VL_BACKEND_HEADLESS, VL_CLOCK_VIRTUAL}};
constexpr const char* kEndless[] = {
    "While (1) { }",
    "For (;;) ;",
    "While (1) x = 1;",
    "DisableEvents(); While (1) { }",
    "While (1) Wait(100000);",
    "Restart();",
    "While (1) { DisableEvents(); EnableEvents(); }",
    "Program.OnError = F; Function F() { } While (1) { Wait(); GetChar(-1); }",
    "While (1) { o = New T(); } Function T() { This.a = 1; }",
    "OnClose = Hold; SetAutoClose(0); While (1) { Wait(10); } Function Hold() { While (1) { } }",
    "s = Input(\"name: \"); While (1) s = Input();",
    "Function F() { While (1) { } } F();",
    "a[0] = 0; While (1) { SetPixel(1, 1, 0xFF); Write(\"x\"); }",
};

TEST_P(VorlaneCStop, WithinASecond) {
  const auto [clock, program] = GetParam();
  const auto [backend, kind] = kClocks[clock];
  PlayerPtr player = WithSource(kEndless[program], Options(backend, kind));
  ASSERT_EQ(vl_run(player.get()), 1);
  EXPECT_EQ(vl_wait(player.get(), 60), VL_RUNNING) << "it must not end by itself: " << vl_error(player.get());
  const auto start = Clock::now();
  vl_stop(player.get());
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(10));
  EXPECT_EQ(vl_wait(player.get(), 0), VL_ENDED);
  EXPECT_EQ(vl_get_result(player.get()), VL_OK);
  EXPECT_STREQ(vl_error(player.get()), "");
}

INSTANTIATE_TEST_SUITE_P(Endless, VorlaneCStop,
                         testing::Combine(testing::Range(0, static_cast<int>(std::size(kClocks))),
                                          testing::Range(0, static_cast<int>(std::size(kEndless)))));

TEST(VorlaneC, DestroyStopsARun) {
  const auto start = Clock::now();
  {
    PlayerPtr player = WithSource("While (1) { }", Options(VL_BACKEND_EMBED));
    ASSERT_EQ(vl_run(player.get()), 1);
  }
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(10));
}

TEST(VorlaneC, StopWithoutARun) {
  PlayerPtr player = WithSource("x = 1;");
  vl_stop(player.get());
  EXPECT_EQ(vl_wait(player.get(), 0), VL_IDLE);
  EXPECT_EQ(RunToEnd(player.get()), VL_OK);
  vl_stop(player.get());
  EXPECT_EQ(Globals(player.get()), (json{{"x", 1}}));
}

TEST(VorlaneC, WaitGivesUpAfterItsTime) {
  PlayerPtr player = WithSource("While (1) { }", Options(VL_BACKEND_EMBED));
  ASSERT_EQ(vl_run(player.get()), 1);
  EXPECT_EQ(vl_wait(player.get(), 0), VL_RUNNING);
  const auto start = Clock::now();
  EXPECT_EQ(vl_wait(player.get(), 30), VL_RUNNING);
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(29));
  vl_stop(player.get());
}

// --- Several runs ---

TEST(VorlaneC, ASecondRunStartsAsTheFirstDid) {
  PlayerPtr player =
      WithSource("n = 0; While (Random(1000) != 1) n++; t = System.GetElapsedTime(); SetPixel(1, 1, n);");
  ASSERT_EQ(RunToEnd(player.get()), VL_OK) << vl_error(player.get());
  const std::string first = vl_globals(player.get());
  ASSERT_EQ(RunToEnd(player.get()), VL_OK);
  EXPECT_EQ(vl_globals(player.get()), first);
}

TEST(VorlaneC, ARunAfterAnError) {
  PlayerPtr player = WithSource("x = 1 / 0;");
  EXPECT_EQ(RunToEnd(player.get()), VL_ERROR);
  SetSource(player.get(), "y = 2;");
  EXPECT_EQ(RunToEnd(player.get()), VL_OK);
  EXPECT_STREQ(vl_error(player.get()), "");
  EXPECT_STREQ(vl_error_detail(player.get()), "");
  EXPECT_EQ(Globals(player.get()), (json{{"y", 2}}));
}

TEST(VorlaneC, ARunAfterAStop) {
  PlayerPtr player = WithSource("While (1) { }", Options(VL_BACKEND_EMBED));
  ASSERT_EQ(vl_run(player.get()), 1);
  vl_stop(player.get());
  SetSource(player.get(), "y = 2; Wait(30); z = 3;");
  EXPECT_EQ(RunToEnd(player.get()), VL_OK);
  EXPECT_EQ(Globals(player.get()), (json{{"y", 2}, {"z", 3}}));
}

TEST(VorlaneC, PlayersShareNothing) {
  constexpr int kPlayers = 4;
  std::vector<PlayerPtr> players;
  for (int i = 0; i < kPlayers; ++i) {
    const std::string n = std::to_string(i);
    players.push_back(WithSource("mine = " + n + "; s = \"\"; For (k = 0; k < 3000; k++) { s = \"" + n +
                                     "\" + k; f = New Font(); } SetPixel(0, 0, mine + 1); Function F" + n + "() { }",
                                 Options(i % 2 ? VL_BACKEND_EMBED : VL_BACKEND_HEADLESS)));
  }
  for (PlayerPtr& player : players) ASSERT_EQ(vl_run(player.get()), 1);
  for (int i = kPlayers; i-- > 0;) {
    ASSERT_EQ(vl_wait(players[static_cast<size_t>(i)].get(), -1), VL_ENDED);
    const json globals = Globals(players[static_cast<size_t>(i)].get());
    EXPECT_EQ(globals.at("mine"), i);
    EXPECT_EQ(globals.at("s"), std::to_string(i) + "2999");
  }
}

// --- Pictures ---

TEST(VorlaneC, TheFrameIsTheWindow) {
  vl_options options = Options();
  options.width = 40;
  options.height = 30;
  PlayerPtr player = WithSource("SetPixel(3, 2, 0x123456); Wait(200);", options);
  ASSERT_EQ(RunToEnd(player.get()), VL_OK) << vl_error(player.get());
  int32_t width = 0;
  int32_t height = 0;
  ASSERT_EQ(vl_frame(player.get(), nullptr, 0, &width, &height), 1);
  EXPECT_EQ(width, 40);
  EXPECT_EQ(height, 30);
  std::vector<uint32_t> pixels(40 * 30, 0xAAAAAAAA);
  EXPECT_EQ(vl_frame(player.get(), pixels.data(), pixels.size() - 1, &width, &height), 1);
  EXPECT_EQ(pixels[0], 0xAAAAAAAA) << "too small a buffer is left alone";
  EXPECT_EQ(vl_frame(player.get(), pixels.data(), pixels.size(), nullptr, nullptr), 1);
  for (size_t i = 0; i < pixels.size(); ++i) {
    ASSERT_EQ(pixels[i], i == 2 * 40 + 3 ? 0x123456u : 0xFFFFFFu) << i;
  }
}

// What was drawn just before the end is seen although no refresh came any more.
TEST(VorlaneC, TheFrameOfAProgramThatFails) {
  vl_options options = Options();
  options.width = options.height = 8;
  PlayerPtr player = WithSource("SetPixel(3, 2, 0x123456); x = 1 / 0;", options);
  ASSERT_EQ(RunToEnd(player.get()), VL_ERROR);
  std::vector<uint32_t> pixels(64);
  ASSERT_EQ(vl_frame(player.get(), pixels.data(), pixels.size(), nullptr, nullptr), 1);
  EXPECT_EQ(pixels[2 * 8 + 3], 0x123456u);
}

TEST(VorlaneC, TheFrameWhileAProgramRuns) {
  PlayerPtr player = WithSource("Clear(0x0000FF); While (1) Wait(10);", Options(VL_BACKEND_EMBED));
  ASSERT_EQ(vl_run(player.get()), 1);
  std::vector<uint32_t> pixels(640 * 480);
  const auto until = Clock::now() + std::chrono::seconds(5);
  while (Clock::now() < until && pixels[0] != 0x0000FF) {
    ASSERT_EQ(vl_wait(player.get(), 10), VL_RUNNING);
    vl_frame(player.get(), pixels.data(), pixels.size(), nullptr, nullptr);
  }
  EXPECT_EQ(pixels[0], 0x0000FFu);
  EXPECT_EQ(pixels.back(), 0x0000FFu);
  vl_stop(player.get());
}

// --- Input ---

vl_input_event Input(vl_input_type type, int32_t code = 0, int32_t down = 0, int32_t x = 0, int32_t y = 0) {
  return {type, code, down, x, y, 0, nullptr};
}

constexpr char kListening[] =
    "seen = \"\"; OnMouseDown = Down; OnMouseUp = Up; OnMouseMove = Move; OnSize = Size; OnMouseWheel = Wheel;"
    "OnDblClick = Twice; While (1) Wait(10);"
    "Function Down(w, x, y, b) { seen += \"d\" + x + \",\" + y + \",\" + (b - Window.LEFTBUTTON) + \" \"; }"
    "Function Up(w, x, y, b) { seen += \"u\" + x + \",\" + y + \" \"; }"
    "Function Twice(w, x, y, b) { seen += \"t\" + x + \",\" + y + \" \"; }"
    "Function Move(w, x, y) { seen += \"m\" + x + \",\" + y + \" \"; }"
    "Function Size(w, x, y) { seen += \"s\" + x + \",\" + y + \" \"; }"
    "Function Wheel(w, d) { seen += \"w\" + d + \" \"; }";

TEST(VorlaneC, ScriptedInput) {
  PlayerPtr player = WithSource(kListening);
  const std::pair<uint64_t, vl_input_event> events[] = {
      {500, Input(VL_INPUT_CLOSE)},  // in any order
      {100, Input(VL_INPUT_MOUSE, 0, 0, 5, 6)},
      {120, Input(VL_INPUT_MOUSE, 1, 1, 7, 8)},
      {130, Input(VL_INPUT_MOUSE, 1, 0, 9, 10)},
      {140, Input(VL_INPUT_MOUSE, 3, 1, -1, 2)},
      {145, Input(VL_INPUT_MOUSE, 2, 1, 3, 4)},
      {150, Input(VL_INPUT_MOUSE, 1, 2, 11, 12)},
      {160, Input(VL_INPUT_WHEEL, -120, 0, 1, 1)},
      {200, Input(VL_INPUT_RESIZE, 0, 0, 300, 200)},
  };
  for (const auto& [at, event] : events) ASSERT_EQ(vl_script_input(player.get(), at, &event), 1);
  ASSERT_EQ(RunToEnd(player.get()), VL_OK) << vl_error(player.get());
  EXPECT_EQ(Globals(player.get()).at("seen"), "m5,6 d7,8,0 u9,10 d-1,2,2 d3,4,1 t11,12 w-120 s300,200 ");
}

TEST(VorlaneC, RecordedInputPlaysAgain) {
  vl_options options = Options();
  options.keep_input = 1;
  PlayerPtr player = WithSource(kListening, options);
  const auto script = [](vl_player* to, uint64_t at, const vl_input_event& event) {
    ASSERT_EQ(vl_script_input(to, at, &event), 1);
  };
  vl_input_event shifted = Input(VL_INPUT_KEY, 65, 1);
  shifted.mods = 5;
  script(player.get(), 33, shifted);
  for (int i = 0; i < 50; ++i)
    script(player.get(), static_cast<uint64_t>(40 + 7 * i), Input(VL_INPUT_MOUSE, 0, 0, i, 2 * i));
  script(player.get(), 71, Input(VL_INPUT_CHAR, 'x'));
  script(player.get(), 72, Input(VL_INPUT_FOCUS, 0, 1));
  script(player.get(), 300, Input(VL_INPUT_MOUSE, 2, 1, 1, 1));
  script(player.get(), 301, Input(VL_INPUT_MOUSE, 1, 2, 1, 1));
  script(player.get(), 600, Input(VL_INPUT_WHEEL, 120, 0, 4, 4));
  script(player.get(), 700, Input(VL_INPUT_CLOSE));
  ASSERT_EQ(RunToEnd(player.get()), VL_OK) << vl_error(player.get());
  const std::string first = vl_globals(player.get());

  PlayerPtr again = WithSource(kListening, options);
  uint64_t at = 0;
  uint64_t last = 0;
  vl_input_event event;
  size_t count = 0;
  for (; vl_recorded_input(player.get(), count, &at, &event); ++count) {
    EXPECT_GE(at, last);
    last = at;
    script(again.get(), at, event);
    if (count == 0) {
      EXPECT_EQ(event.type, VL_INPUT_KEY);
      EXPECT_EQ(event.code, 65);
      EXPECT_EQ(event.down, 1);
      EXPECT_EQ(event.mods, 5);
    }
  }
  EXPECT_EQ(count, 57u);
  EXPECT_EQ(vl_recorded_input(player.get(), count, &at, &event), 0);
  ASSERT_EQ(RunToEnd(again.get()), VL_OK);
  EXPECT_EQ(vl_globals(again.get()), first);
  for (size_t i = 0; i < count; ++i) {
    uint64_t at2 = 0;
    vl_input_event event2;
    ASSERT_EQ(vl_recorded_input(player.get(), i, &at, &event), 1);
    ASSERT_EQ(vl_recorded_input(again.get(), i, &at2, &event2), 1);
    EXPECT_EQ(at2, at) << i;
    EXPECT_EQ(std::memcmp(&event, &event2, sizeof event), 0) << i;
  }
}

TEST(VorlaneC, SentInput) {
  PlayerPtr player = WithSource("s = Input(); ", Options(VL_BACKEND_EMBED));
  const vl_input_event early = Input(VL_INPUT_CHAR, 'e');
  EXPECT_EQ(vl_send_input(player.get(), &early), 0) << "nothing runs yet";
  ASSERT_EQ(vl_run(player.get()), 1);
  // Input listens from some moment on; what comes before it is lost, as for a person who types too early.
  const vl_input_event a = Input(VL_INPUT_CHAR, 'a');
  const vl_input_event enter = Input(VL_INPUT_CHAR, 13);
  vl_state state = VL_RUNNING;
  for (int i = 0; i < 200 && state == VL_RUNNING; ++i) {
    vl_send_input(player.get(), &a);
    if (i > 2) vl_send_input(player.get(), &enter);
    state = vl_wait(player.get(), 25);
  }
  ASSERT_EQ(state, VL_ENDED);
  EXPECT_EQ(Globals(player.get()).at("s").get<std::string>().find_first_not_of('a'), std::string::npos);
  EXPECT_EQ(vl_send_input(player.get(), &a), 0) << "nothing runs any more";
}

// --- Wrong use ---

// As a caller in C may do it.
template <typename E>
void Put(E& value, int number) {
  static_assert(sizeof value == sizeof number);
  std::memcpy(&value, &number, sizeof number);
}

TEST(VorlaneC, WrongOptions) {
  char error[100];
  EXPECT_EQ(vl_create(nullptr, error, sizeof error), nullptr);
  vl_options_init(nullptr);
  struct {
    const char* what;
    void (*spoil)(vl_options&);
  } const cases[] = {
      {"size of the struct", [](vl_options& o) { o.struct_size = 3; }},
      {"no width", [](vl_options& o) { o.width = 0; }},
      {"negative height", [](vl_options& o) { o.height = -5; }},
      {"huge width", [](vl_options& o) { o.width = 1 << 30; }},
      {"unknown back end", [](vl_options& o) { Put(o.backend, 7); }},
      {"unknown clock", [](vl_options& o) { Put(o.clock, 7); }},
      {"virtual clock without headless",
       [](vl_options& o) {
         o.backend = VL_BACKEND_EMBED;
         o.clock = VL_CLOCK_VIRTUAL;
       }},
  };
  for (const auto& c : cases) {
    vl_options options = Options();
    c.spoil(options);
    error[0] = 0;
    PlayerPtr player(vl_create(&options, error, sizeof error));
    EXPECT_EQ(player, nullptr) << c.what;
    EXPECT_STRNE(error, "") << c.what;
    PlayerPtr silent(vl_create(&options, nullptr, 0));
    EXPECT_EQ(silent, nullptr) << c.what;
  }
  // The reason is cut to the buffer.
  vl_options options = Options();
  options.width = 0;
  char tiny[4] = {'x', 'x', 'x', 'x'};
  EXPECT_EQ(vl_create(&options, tiny, 3), nullptr);
  EXPECT_EQ(tiny[2], 0);
  EXPECT_EQ(tiny[3], 'x');
}

TEST(VorlaneC, NullArguments) {
  const vl_input_event event = Input(VL_INPUT_CLOSE);
  vl_destroy(nullptr);
  vl_stop(nullptr);
  EXPECT_EQ(vl_run(nullptr), 0);
  EXPECT_EQ(vl_wait(nullptr, -1), VL_IDLE);
  EXPECT_EQ(vl_set_file(nullptr, "x"), 0);
  EXPECT_EQ(vl_set_bytes(nullptr, "x", "", 0), 0);
  EXPECT_EQ(vl_add_file(nullptr, "x", "", 0), 0);
  EXPECT_EQ(vl_set_parameter(nullptr, "a", "b"), 0);
  EXPECT_EQ(vl_set_command_line(nullptr, "a"), 0);
  EXPECT_EQ(vl_script_input(nullptr, 0, &event), 0);
  EXPECT_EQ(vl_send_input(nullptr, &event), 0);
  EXPECT_EQ(vl_recorded_input(nullptr, 0, nullptr, nullptr), 0);
  EXPECT_EQ(vl_frame(nullptr, nullptr, 0, nullptr, nullptr), 0);
  EXPECT_STREQ(vl_error(nullptr), "");
  EXPECT_STREQ(vl_error_detail(nullptr), "");
  EXPECT_STREQ(vl_globals(nullptr), "");

  PlayerPtr player = Create(Options());
  EXPECT_EQ(vl_run(player.get()), 0) << "no application is set";
  EXPECT_EQ(vl_wait(player.get(), -1), VL_IDLE);
  EXPECT_EQ(vl_set_file(player.get(), nullptr), 0);
  EXPECT_EQ(vl_set_bytes(player.get(), nullptr, "x", 1), 0);
  EXPECT_EQ(vl_set_bytes(player.get(), "x", nullptr, 1), 0);
  EXPECT_EQ(vl_add_file(player.get(), "x", "y", 1), 0) << "nothing to put it beside";
  EXPECT_EQ(vl_set_parameter(player.get(), "a", nullptr), 0);
  EXPECT_EQ(vl_set_parameter(player.get(), nullptr, "b"), 0);
  EXPECT_EQ(vl_set_command_line(player.get(), nullptr), 0);
  EXPECT_EQ(vl_script_input(player.get(), 0, nullptr), 0);
  EXPECT_EQ(vl_send_input(player.get(), nullptr), 0);
  EXPECT_EQ(vl_recorded_input(player.get(), 0, nullptr, nullptr), 0);
}

TEST(VorlaneC, WhatARunningPlayerRefuses) {
  PlayerPtr player = WithSource("While (1) Wait(10);", Options(VL_BACKEND_EMBED));
  ASSERT_EQ(vl_run(player.get()), 1);
  EXPECT_EQ(vl_run(player.get()), 0);
  EXPECT_EQ(vl_set_file(player.get(), "/tmp/x"), 0);
  EXPECT_EQ(vl_set_bytes(player.get(), "x", "y", 1), 0);
  EXPECT_EQ(vl_add_file(player.get(), "x", "y", 1), 0);
  vl_stop(player.get());
  EXPECT_EQ(vl_run(player.get()), 1);
  vl_stop(player.get());
}

TEST(VorlaneC, InputThatAPlayerDoesNotTake) {
  PlayerPtr headless = WithSource("x = 1;");
  PlayerPtr embedded = WithSource("x = 1;", Options(VL_BACKEND_EMBED));
  PlayerPtr real = WithSource("x = 1;", Options(VL_BACKEND_HEADLESS, VL_CLOCK_REAL));
  const vl_input_event good = Input(VL_INPUT_CLOSE);
  EXPECT_EQ(vl_script_input(headless.get(), 5, &good), 1);
  EXPECT_EQ(vl_script_input(embedded.get(), 5, &good), 0);
  EXPECT_EQ(vl_script_input(real.get(), 5, &good), 0);
  for (const int type : {0, 8, 99, -1}) {
    vl_input_event bad = good;
    Put(bad.type, type);
    EXPECT_EQ(vl_script_input(headless.get(), 5, &bad), 0) << type;
  }
  for (const int button : {5, -1}) {
    const vl_input_event bad = Input(VL_INPUT_MOUSE, button, 1);
    EXPECT_EQ(vl_script_input(headless.get(), 5, &bad), 0) << button;
  }
}

}  // namespace
}  // namespace vl
