// The `vorlane` command: reads the command line and hands over to one of its commands.
#include <CLI/CLI.hpp>
#include <cstdio>

#include "include/vorlane.h"
#include "tools/commands.h"

namespace vl {

void PrintError(const std::string& text) { std::fprintf(stderr, "vorlane: %s\n", text.c_str()); }

}  // namespace vl

int main(int argc, char** argv) {
  CLI::App app{"Vorlane: plays, packs and examines applications of the Vorlane language.", "vorlane"};
  app.set_version_flag("--version", VL_VERSION);
  app.require_subcommand(1);
  app.failure_message([](const CLI::App* a, const CLI::Error& e) {
    return "vorlane: " + std::string(e.what()) + "\nTry '" + a->get_display_name() + " --help'.\n";
  });

  vl::RunCommand run;
  CLI::App* runApp = app.add_subcommand("run", "Play an application");
  runApp
      ->add_option("APP", run.application,
                   "A .vlp file, a project folder, one source file (.vlq), or an address (http, https, ftp)")
      ->required();
  runApp->add_flag("--headless", run.headless, "No display: windows live in memory, the clock is virtual");
  runApp->add_option("--clock", run.clock, "Override the clock")->check(CLI::IsMember({"real", "virtual"}));
  runApp->add_option("--param", run.parameters, "NAME=VALUE: a parameter as the page would give it; may be repeated")
      ->allow_extra_args(false)
      ->take_all();
  runApp->add_option("--args", run.arguments, "The program's command line");
  runApp
      ->add_option("--allow-net", run.allowedNet,
                   "HOST:PORT, HOST:* or all: what the program may reach besides this machine; may be repeated")
      ->allow_extra_args(false)
      ->take_all();
  runApp->add_flag("--real-net", run.realNetwork,
                   "With --headless: the network of the machine and a real clock, instead of one in memory");
  runApp->add_flag("--detached", run.detached, "A run of its own, without the host's window");
  runApp->add_option("--size", run.size, "WIDTHxHEIGHT of the host's window (default 640x480)");
  runApp->add_option("--scale", run.scaling, "How a window of another size shows the picture (default smooth)")
      ->check(CLI::IsMember({"follow", "integer", "nearest", "smooth"}));
  runApp->add_flag("--full-screen", run.fullScreen, "Begin on the whole screen");
  runApp->add_option("--max-time", run.maxTimeMs, "Stop as the host would, after MS of the program's clock");
  runApp->add_option("--input", run.inputFile, "Recorded input: JSON lines");
  runApp->add_option("--record", run.recordFile, "Write such a file while a person plays");
  runApp->add_option("--screenshot", run.screenshotFile, "PNG file for the window's picture when the run ends");
  runApp->add_option("--globals", run.globalsFile, "File, or -, for the program's global variables as JSON");
  runApp->add_option("--walker", run.walker, "reference: the plain walk over the tokens, slower, for tests")
      ->check(CLI::IsMember({"prepared", "reference"}));
  runApp->add_option("--frames", run.framesFolder, "Empty or new folder for a PNG file of each refreshed picture");
  runApp->add_flag("--no-shell", run.noShell, "Without the player's own keys and menu; Ctrl+F10 shows it");
  runApp->add_flag("--no-settings", run.noSettings, "Without the settings file, and nothing is remembered");
  runApp->add_flag("--keep-files", run.keepFiles,
                   "The program may make files; they are kept for its next run (see 'vorlane saves')");
  CLI::Option* printTo =
      runApp->add_option("--print-to", run.printFolder, "Folder for what the program prints, one PDF file a document");
  runApp->add_option("--print-queue", run.printQueue, "Print queue of CUPS for what the program prints, or \"default\"")
      ->excludes(printTo);
  CLI::Option* seed = runApp->add_option("--seed", run.seed, "Seed of the random generator");

  vl::PackCommand pack;
  CLI::App* packApp = app.add_subcommand("pack", "Pack a project folder into an application");
  packApp->footer(
      "The smallest vorlane.toml is one line, name = \"Hello\", with a main.vlq beside it. Banks of pictures, "
      "animations,\n"
      "sounds, texts and data are lists of files:\n\n"
      "  [[part]]\n"
      "  [[part.bank]]\n"
      "  type = \"image\"\n"
      "  elements = [{ file = \"hero.png\", store = 16, transparent = \"alpha\" }, \"sky.jpg\"]\n\n"
      "All keys: docs/application-file.md, chapter vorlane.toml.");
  packApp->add_option("FOLDER", pack.folder, "A folder with a vorlane.toml")->required();
  packApp->add_option("-o,--output", pack.output, "The application file to write");
  packApp->add_flag("--watch", pack.watch, "Pack again whenever a file of the project changes");

  vl::InfoCommand info;
  CLI::App* infoApp = app.add_subcommand("info", "Show chunks, parts, banks, elements, versions and classes");
  CLI::Option* infoFile = infoApp->add_option("APP", info.application, "A .vlp file");
  infoApp->add_flag("--json", info.json, "As JSON");
  infoApp->add_flag("--build", info.build, "What this player was built with instead");

  vl::ExtractCommand extract;
  CLI::App* extractApp = app.add_subcommand("extract", "Unpack an application into a project folder");
  extractApp->add_option("APP", extract.application, "A .vlp file")->required();
  extractApp->add_option("-o,--output", extract.output, "The folder to make; must be absent or empty")->required();

  vl::TokensCommand tokens;
  CLI::App* tokensApp = app.add_subcommand("tokens", "Print the compiled stream, a record a line");
  tokensApp->add_option("APP", tokens.application, "A .vlp file, a project folder or one source file")->required();

  vl::CheckCommand check;
  CLI::App* checkApp = app.add_subcommand("check", "Compile only and report errors as file:line:column");
  checkApp->add_option("SOURCE", check.sources, "Source files (.vlq) or project folders")->required();

  vl::ReferenceCommand reference;
  CLI::App* referenceApp = app.add_subcommand("reference", "The classes as built: members, events, constants");
  referenceApp->add_option("CLASS", reference.classes, "Class names; all when none is given");
  referenceApp->add_flag("--json", reference.json, "As JSON");

  vl::SavesCommand saves;
  CLI::App* savesApp = app.add_subcommand("saves", "The files that applications keep (run --keep-files)");
  savesApp->require_subcommand(1);
  const auto savesAction = [&](const char* name, const char* help, vl::SavesCommand::Action action) {
    CLI::App* sub = savesApp->add_subcommand(name, help);
    sub->callback([&saves, action] { saves.action = action; });
    return sub;
  };
  using SavesAction = vl::SavesCommand::Action;
  const char* const savesName = "The application, or its name as 'saves list' shows it";
  savesAction("list", "Every application that keeps files", SavesAction::List);
  savesAction("show", "The files of one", SavesAction::Show)
      ->add_option("APP", saves.application, savesName)
      ->required();
  CLI::App* savesExport = savesAction("export", "Copy the files of one into a folder", SavesAction::Export);
  savesExport->add_option("APP", saves.application, savesName)->required();
  savesExport->add_option("-o,--output", saves.folder, "The folder to make; must be absent or empty")->required();
  CLI::App* savesImport =
      savesAction("import", "Copy a folder that was exported over the files of one", SavesAction::Import);
  savesImport->add_option("APP", saves.application, savesName)->required();
  savesImport->add_option("FOLDER", saves.folder, "The folder")->required();
  CLI::App* savesClear = savesAction("clear", "Remove the files of one", SavesAction::Clear);
  savesClear->add_option("APP", saves.application, savesName);
  savesClear->add_flag("--all", saves.all, "Of every application");

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    return app.exit(e) == 0 ? vl::kExitOk : vl::kExitUsage;
  }
  run.hasSeed = seed->count() > 0;
  if (*runApp) return run.Execute();
  if (*packApp) return pack.Execute();
  if (*infoApp) {
    if (!info.build && infoFile->count() == 0) {
      vl::PrintError("info needs an application file, or --build");
      return vl::kExitUsage;
    }
    return info.Execute();
  }
  if (*extractApp) return extract.Execute();
  if (*tokensApp) return tokens.Execute();
  if (*checkApp) return check.Execute();
  if (*savesApp) return saves.Execute();
  return reference.Execute();
}
