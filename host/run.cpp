#include "host/run.h"

#include "classes/core_classes.h"
#include "engine3d/script/engine3d_classes.h"
#include "gfx2d/script/gfx2d_classes.h"
#include "host/appfile/errors.h"
#include "host/globals.h"
#include "input/script/input_classes.h"
#include "interpreter/interpretor.h"
#include "net/script/vex_classes.h"
#include "platform/device_queue.h"
#include "platform/run_files.h"
#include "ui/ui_classes.h"

namespace vl {

const ClassRegistry& PlayerClasses() {
  static const ClassRegistry registry = [] {
    ClassRegistry r;
    RegisterCoreClasses(r);
    RegisterGfx2dClasses(r);
    RegisterEngine3dClasses(r);
    RegisterUiClasses(r);
    RegisterInputClasses(r);
    RegisterNetClasses(r);
    return r;
  }();
  return registry;
}

RunResult Run::Execute() {
  error.clear();
  errorDetail.clear();
  globals.clear();
  const auto describe = [&](const CInterpretor& interpreter) {
    const CIError& e = interpreter.lastError;
    if (e.code == ERR_FILE_LIMIT) return;  // ends the run without a message
    const std::string title = interpreter.GetSourceTitle();
    const std::string text = interpreter.FormatLastError();
    error = title + ": " + text;
    errorDetail = e.sourceName + ":" + std::to_string(e.line + 1) + ":" + std::to_string(e.column + 1) + ": " +
                  (e.detail.empty() ? "error " + std::to_string(e.code & ~kSystemError) : e.detail);
    if (services_.windows) services_.windows->showMessage(title, text);
  };
  try {
    // What the program writes is its own.
    RunFiles files(services_.files, keptFiles);
    Services services = services_;
    services.files = services.disk = &files;
    DeviceQueue devices(*services.events, services.windows, services.input);
    services.events = services.devices = &devices;
    CInterpretor interpreter(param, services, PlayerClasses());
    if (!interpreter.Init()) {
      errorDetail = StatusText(interpreter.appStatus);
      if (services_.windows) services_.windows->showMessage(param.path, errorDetail);
      return RunResult::Unreadable;
    }
    if (keepGlobals_) interpreter.onEnd = [&] { globals = GlobalsToJson(interpreter); };
    interpreter.onRestartFailed = [&] { describe(interpreter); };
    if (interpreter.Start()) return RunResult::Ended;
    describe(interpreter);
    return RunResult::Error;
  } catch (const std::bad_alloc&) {
    errorDetail = "out of memory";
    return RunResult::Unreadable;
  }
}

}  // namespace vl
