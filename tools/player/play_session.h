// PlaySession: `vorlane run` from the options to the exit status. One player, and as many runs as its person asks for.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "include/vorlane.h"
#include "tools/application_source.h"
#include "tools/commands.h"
#include "tools/input_lines.h"
#include "tools/player/frame_folder.h"
#include "tools/player/saves.h"
#include "tools/player/settings.h"

namespace vl {

class PlaySession {
 public:
  explicit PlaySession(const RunCommand& command) : command_(command), application_(command.application) {}
  int Run();

 private:
  // Each gives kExitOk, or tells what is wrong and gives the exit status.
  int ReadOptions();
  int ReadInput();
  int MakePlayer();
  int Load();
  int WriteResults();
  int Report() const;

  bool IsOnDesktop() const { return !command_.headless; }
  ViewSettings ViewOf(const std::string& path) const;
  void RememberApplication();
  void RememberView();
  // True when another run is to follow.
  bool Play();
  bool Serve();
  void TakeScreenshot();

  struct Delete {
    void operator()(vl_player* player) const { vl_destroy(player); }
  };

  const RunCommand& command_;
  std::string application_;  // what is played now
  std::string path_;         // its absolute path
  bool isFirst_ = true;
  vl_options options_{};
  std::string caption_;
  Settings settings_;
  Memory memory_;
  ApplicationFiles files_;
  std::vector<TimedInput> input_;
  FrameFolder frames_;
  Saves saves_;
  std::unique_ptr<vl_player, Delete> player_;
};

}  // namespace vl
