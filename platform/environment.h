// Environment: what a program may ask about the machine it runs on.
#pragma once

#include <string>
#include <string_view>

namespace vl {

// In the terms of the period: platform 1 is the Windows 95 family, 2 the NT family.
struct SystemVersion {
  int platform = 2;
  int major = 5;
  int minor = 1;
};

class Environment {
 public:
  virtual ~Environment() = default;
  virtual SystemVersion systemVersion() { return {}; }
  virtual std::string computerName() = 0;
  virtual std::string computerAddress() { return "127.0.0.1"; }
  virtual std::string userName() = 0;
  // Directories as paths of the period, without a final backslash.
  virtual std::string systemDirectory() { return "C:\\WINDOWS\\SYSTEM32"; }
  virtual std::string osDirectory() { return "C:\\WINDOWS"; }
  virtual std::string tempDirectory() { return "C:\\WINDOWS\\TEMP"; }
  virtual std::string applicationDirectory() { return "C:\\VORLANE"; }
  // True for French; the runtime's own texts come in English and French.
  virtual bool isFrench() = 0;
  // Asks the desktop to open an address; may be refused.
  virtual void browseUrl(std::string_view url) = 0;
};

}  // namespace vl
