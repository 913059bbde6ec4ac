// PosixEnvironment: what a program may know about this machine.
#pragma once

#include "platform/environment.h"

namespace vl {

class PosixEnvironment final : public Environment {
 public:
  // Texts are code page 1252.
  std::string computerName() override;
  std::string userName() override;
  bool isFrench() override;
  // Web and mail addresses only: a program can't start others through the desktop.
  void browseUrl(std::string_view url) override;
};

// True for http, https, ftp and mailto addresses without blanks or control characters.
bool IsBrowsableUrl(std::string_view url);

}  // namespace vl
