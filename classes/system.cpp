// System: the fixed object for the machine, its clock and its screen.
#include "base/system_colors.h"
#include "classes/core_classes.h"
#include "interpreter/interpretor.h"

namespace vl {

namespace {

constexpr uint32_t kColorFamily = 0xBABC0000;
constexpr uint32_t kDownloadFamily = 0xBCBC0000;
constexpr size_t kComputerNameBytes = 15;
constexpr size_t kUserNameBytes = 256;

enum OperatingSystem : int32_t {
  kWindowsCe = 0,
  kWindows95 = 1,
  kWindows98 = 2,
  kWindowsNt = 3,
  kUnknown = 6,
  kWindowsMe = 7,
  kWindows2000 = 8,
  kWindows9x = 9,
  kWindowsXp = 10,
};

int32_t SystemOf(const SystemVersion& v) {
  switch (v.platform) {
    case 1:
      switch (v.minor) {
        case 0:
          return kWindows95;
        case 10:
          return kWindows98;
        case 90:
          return kWindowsMe;
        default:
          return kWindows9x;
      }
    case 2:
      if (v.major != 5) return kWindowsNt;
      return v.minor == 0 ? kWindows2000 : kWindowsXp;
    case 3:
      return kWindowsCe;
    default:
      return kUnknown;
  }
}

uint32_t SwapRedBlue(uint32_t c) { return (c & 0xFF) << 16 | (c & 0xFF00) | (c >> 16 & 0xFF); }

class CISystem : public CIBaseClassImpl {
 public:
  explicit CISystem(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_SYSTEM, Listing::Listed) {}

  void GetByteOrdering() { Result(2); }
  void DownloadFile() {
    const CValue* url = interpreter.GetArg(0);
    if (!url || url->type != VT_STRING) interpreter.RaiseError(ERR_BAD_ARGUMENT);
    const std::string address(url->StringView());
    const bool inBackground = interpreter.GetArgInt(1) == 1;
    CDownloads* const downloads = Downloads();
    Result(downloads ? downloads->DownloadFile(address, inBackground) : std::string());
  }
  void OnDownload() {
    const BlockRecord* function = interpreter.GetEventFunction();
    if (CDownloads* const downloads = Downloads()) downloads->onDownload = function;
  }
  void StopFileDownload() {
    const CValue* url = interpreter.GetArg(0);
    if (!url || url->type != VT_STRING) interpreter.RaiseError(ERR_BAD_ARGUMENT);
    if (interpreter.downloads) interpreter.downloads->StopFileDownload(std::string(url->StringView()));
  }
  // Null in a build without them.
  CDownloads* Downloads() {
    if (!interpreter.downloads && interpreter.registry.makeDownloads) {
      interpreter.downloads = interpreter.registry.makeDownloads(interpreter);
    }
    return interpreter.downloads.get();
  }
  void GetOS() { Result(SystemOf(Machine().systemVersion())); }
  void GetOSRelease() { Result(Machine().systemVersion().major); }
  void GetOSSubRelease() { Result(Machine().systemVersion().minor); }
  void GetScreenWidth() { Result(Screen().width); }
  void GetScreenHeight() { Result(Screen().height); }
  void GetScreenDepth() { Result(Screen().depth); }
  void GetComputerName() { Result(Machine().computerName().substr(0, kComputerNameBytes)); }
  void GetComputerIP() { Result(Machine().computerAddress()); }
  void GetDLLDirectory() { Result(Machine().systemDirectory()); }
  void GetOSDirectory() { Result(Machine().osDirectory()); }
  void GetTempDirectory() { Result(Machine().tempDirectory()); }
  void GetUserName() { Result(Machine().userName().substr(0, kUserNameBytes)); }
  void GetElapsedTime() { Result(static_cast<int32_t>(interpreter.NowMs())); }
  void GetCurrentYear() { Result(Now().year); }
  void GetCurrentMonth() { Result(Now().month); }
  void GetCurrentDay() { Result(Now().day); }
  void GetCurrentHour() { Result(Now().hour); }
  void GetCurrentMinute() { Result(Now().minute); }
  void GetCurrentSecond() { Result(Now().second); }
  void GetCurrentMilliseconds() { Result(Now().millisecond); }
  void GetDayOfWeek() { Result(Now().dayOfWeek); }
  void NotOffered() { interpreter.RaiseError(ERR_NOT_OFFERED); }
  void BadArgument() { interpreter.RaiseError(ERR_BAD_ARGUMENT); }
  void IsGradientCaptionEnabled() { Result(1); }

  void BrowseURL() {
    if (interpreter.IsArgDefault(0)) return;
    std::string url = interpreter.GetArgString(0);
    if (url.empty()) return;
    const bool mail = url.size() >= 7 && EqualNoCase(std::string_view(url).substr(0, 7), "mailto:");
    if (!mail && url.find("://") == std::string::npos) url.insert(0, "http://");
    Machine().browseUrl(url);
  }

  void GetSysColor() {
    if (interpreter.GetArgCount() != 1 || interpreter.GetArg(0)->type > VT_FLOAT) BadArgument();
    const auto number = static_cast<uint32_t>(interpreter.GetArgInt(0));
    // The system's colour index of each constant, by the constant's low word.
    static constexpr uint8_t kIndex[] = {21, 15, 20, 22, 16, 10, 2,  12, 1, 18, 9, 27, 28, 17,
                                         13, 14, 26, 11, 3,  19, 24, 23, 4, 7,  0, 5,  6,  8};
    if ((number & 0xFFFF0000) != kColorFamily || (number & 0xFFFF) >= sizeof kIndex) BadArgument();
    Result(static_cast<int32_t>(SwapRedBlue(SystemColor(kIndex[number & 0xFFFF]))));
  }

 private:
  Environment& Machine() { return *interpreter.services.environment; }
  LocalTime Now() { return interpreter.services.clock->localTime(); }
  ScreenInfo Screen() { return interpreter.services.windows ? interpreter.services.windows->screen() : ScreenInfo{}; }
  void Result(int32_t v) { interpreter.GetResult().SetInt(v); }
  void Result(const std::string& text) { interpreter.GetResult().SetString(text); }
};

constexpr MemberRow Color(uint16_t n, const char* name) {
  return {static_cast<uint16_t>(55 + n),  name, MemberKind::Constant, nullptr, kColorFamily + n, 0,
          "system colour for GetSysColor"};
}

constexpr MemberRow kRows[] = {
    Row(1, "GetByteOrdering", kMember<&CISystem::GetByteOrdering>, "GetByteOrdering(): LITTLE_ENDIAN"),
    Row(2, "GetOS", kMember<&CISystem::GetOS>, "GetOS(): an OS constant"),
    Row(3, "GetOSRelease", kMember<&CISystem::GetOSRelease>, "GetOSRelease(): major version of the system"),
    Row(4, "GetOSSubRelease", kMember<&CISystem::GetOSSubRelease>, "GetOSSubRelease(): minor version of the system"),
    Row(5, "GetScreenWidth", kMember<&CISystem::GetScreenWidth>, "GetScreenWidth(): pixels"),
    Row(6, "GetScreenHeight", kMember<&CISystem::GetScreenHeight>, "GetScreenHeight(): pixels"),
    Row(7, "GetScreenDepth", kMember<&CISystem::GetScreenDepth>, "GetScreenDepth(): bits a pixel"),
    Row(8, "GetComputerName", kMember<&CISystem::GetComputerName>, "GetComputerName()"),
    Row(9, "GetComputerIP", kMember<&CISystem::GetComputerIP>, "GetComputerIP(): in dotted form"),
    Row(10, "ShutDown", kMember<&CISystem::NotOffered>, "refused: error 20"),
    Row(11, "PowerOff", kMember<&CISystem::NotOffered>, "refused: error 20"),
    Row(12, "Restart", kMember<&CISystem::NotOffered>, "refused: error 20"),
    Row(13, "Logout", kMember<&CISystem::NotOffered>, "refused: error 20"),
    Row(14, "GetDLLDirectory", kMember<&CISystem::GetDLLDirectory>, "GetDLLDirectory(): the system directory"),
    Row(15, "GetUserName", kMember<&CISystem::GetUserName>, "GetUserName()"),
    Row(16, "GetOSDirectory", kMember<&CISystem::GetOSDirectory>, "GetOSDirectory()"),
    Row(17, "GetElapsedTime", kMember<&CISystem::GetElapsedTime>, "GetElapsedTime(): a clock in ms"),
    Row(18, "GetCurrentMonth", kMember<&CISystem::GetCurrentMonth>, "GetCurrentMonth(): 1 to 12"),
    Row(19, "GetCurrentDay", kMember<&CISystem::GetCurrentDay>, "GetCurrentDay(): 1 to 31"),
    Row(20, "GetCurrentYear", kMember<&CISystem::GetCurrentYear>, "GetCurrentYear()"),
    Row(21, "GetCurrentHour", kMember<&CISystem::GetCurrentHour>, "GetCurrentHour(): 0 to 23"),
    Row(22, "GetCurrentMinute", kMember<&CISystem::GetCurrentMinute>, "GetCurrentMinute(): 0 to 59"),
    Row(23, "GetCurrentSecond", kMember<&CISystem::GetCurrentSecond>, "GetCurrentSecond(): 0 to 59"),
    Row(24, "GetDayOfWeek", kMember<&CISystem::GetDayOfWeek>, "GetDayOfWeek(): 0 for Sunday"),
    Row(25, "GetCurrentMilliseconds", kMember<&CISystem::GetCurrentMilliseconds>, "GetCurrentMilliseconds(): 0 to 999"),
    Row(26, "BrowseURL", kMember<&CISystem::BrowseURL>, "BrowseURL(url): opens an address in the browser"),
    Row(27, "InstallDLLFromBank", kMember<&CISystem::BadArgument>, "refused: error 14"),
    Row(28, "GetTempDirectory", kMember<&CISystem::GetTempDirectory>, "GetTempDirectory()"),
    Row(29, "GetSysColor", kMember<&CISystem::GetSysColor>, "GetSysColor(c): 0xRRGGBB of a SYSCOLOR constant"),
    Row(30, "IsGradientCaptionEnabled", kMember<&CISystem::IsGradientCaptionEnabled>,
        "IsGradientCaptionEnabled(): 1 or 0"),
    Row(31, "ParseEnvironmentString", kMember<&CISystem::NotOffered>, "refused: error 20"),
    Row(32, "GetEnvironmentVariable", kMember<&CISystem::NotOffered>, "refused: error 20"),
    Row(33, "DownloadFile", kMember<&CISystem::DownloadFile>,
        "DownloadFile(url, inBackground): path of the local file, empty when it failed"),
    {34, "OnDownload", MemberKind::Event, kMember<&CISystem::OnDownload>, 0, CLASS_SYSTEM,
     "OnDownload = f: f(url, path, done, total, status), in bytes"},
    Row(35, "StopFileDownload", kMember<&CISystem::StopFileDownload>,
        "StopFileDownload(url): of one in the background"),
    Constant(37, "BIG_ENDIAN", 1, "byte order"),
    Constant(38, "LITTLE_ENDIAN", 2, "byte order"),
    Constant(39, "PDP_ENDIAN", 3, "byte order"),
    Constant(40, "OS_WINDOWS_CE", 0, "system for GetOS"),
    Constant(41, "OS_WINDOWS_95", 1, "system for GetOS"),
    Constant(42, "OS_WINDOWS_98", 2, "system for GetOS"),
    Constant(43, "OS_WINDOWS_NT", 3, "system for GetOS"),
    Constant(44, "OS_MACOS", 4, "system for GetOS"),
    Constant(45, "OS_LINUX", 5, "system for GetOS"),
    Constant(46, "OS_UNKNOWN", 6, "system for GetOS"),
    Constant(47, "OS_WINDOWS_ME", 7, "system for GetOS"),
    Constant(48, "OS_WINDOWS_2000", 8, "system for GetOS"),
    Constant(49, "OS_WINDOWS_9X", 9, "system for GetOS"),
    Constant(50, "OS_WINDOWS_XP", 10, "system for GetOS"),
    Constant(51, "DOWNLOADSTATUS_PENDING", kDownloadFamily, "state of a download"),
    Constant(52, "DOWNLOADSTATUS_DOWNLOADING", kDownloadFamily + 1, "state of a download"),
    Constant(53, "DOWNLOADSTATUS_DOWNLOADED", kDownloadFamily + 2, "state of a download"),
    Constant(54, "DOWNLOADSTATUS_ABORTED", kDownloadFamily + 3, "state of a download"),
    Color(0, "SYSCOLOR_3DDARKSHADOW"),
    Color(1, "SYSCOLOR_BUTTONFACE"),
    Color(2, "SYSCOLOR_BUTTONHILIGHT"),
    Color(3, "SYSCOLOR_3DLIGHT"),
    Color(4, "SYSCOLOR_BUTTONSHADOW"),
    Color(5, "SYSCOLOR_ACTIVEBORDER"),
    Color(6, "SYSCOLOR_ACTIVECAPTION"),
    Color(7, "SYSCOLOR_APPWORKSPACE"),
    Color(8, "SYSCOLOR_DESKTOP"),
    Color(9, "SYSCOLOR_BUTTONTEXT"),
    Color(10, "SYSCOLOR_CAPTIONTEXT"),
    Color(11, "SYSCOLOR_GRADIENTACTIVECAPTION"),
    Color(12, "SYSCOLOR_GRADIENTINACTIVECAPTION"),
    Color(13, "SYSCOLOR_GRAYTEXT"),
    Color(14, "SYSCOLOR_HIGHLIGHT"),
    Color(15, "SYSCOLOR_HIGHLIGHTTEXT"),
    Color(16, "SYSCOLOR_HOTLIGHT"),
    Color(17, "SYSCOLOR_INACTIVEBORDER"),
    Color(18, "SYSCOLOR_INACTIVECAPTION"),
    Color(19, "SYSCOLOR_INACTIVECAPTIONTEXT"),
    Color(20, "SYSCOLOR_INFOBACKGROUND"),
    Color(21, "SYSCOLOR_INFOTEXT"),
    Color(22, "SYSCOLOR_MENU"),
    Color(23, "SYSCOLOR_MENUTEXT"),
    Color(24, "SYSCOLOR_SCROLLBAR"),
    Color(25, "SYSCOLOR_WINDOW"),
    Color(26, "SYSCOLOR_WINDOWFRAME"),
    Color(27, "SYSCOLOR_WINDOWTEXT"),
};

}  // namespace

const ClassTable kSystemClass = {CLASS_SYSTEM, kRows, &CreateObject<CISystem>, "The machine, its clock and its screen"};

}  // namespace vl
