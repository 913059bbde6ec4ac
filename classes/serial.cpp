// Serial: a serial port, for values with a frame around each or for bytes as they are.
#include "platform/serial.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "classes/binary.h"
#include "classes/core_classes.h"
#include "classes/serial_frames.h"
#include "interpreter/interpretor.h"

namespace vl {

namespace {

enum TransferMode : int32_t { kModeUnknown = 0, kModeRaw = 1, kModeFramed = 2 };
constexpr uint32_t kRates[] = {110,   300,   600,   1200,  2400,   4800,   9600,  14400,
                               19200, 38400, 56000, 57600, 115200, 128000, 256000};
// Between two looks at the port.
constexpr uint32_t kPollMs = 5;

class CISerial : public CIBaseClassImpl, private SerialLine {
 public:
  explicit CISerial(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_SERIAL, Listing::Listed) {}

  void Destroy(bool final) override {
    port_.reset();
    CIBaseClassImpl::Destroy(final);
  }

  void OpenPort() {
    std::string name = "COM1";
    if (!interpreter.IsArgDefault(0)) {
      const CValue& given = *interpreter.GetArg(0);
      if (given.type == VT_STRING) {
        name = given.StringView();
      } else if (given.type <= VT_FLOAT) {
        name = "COM" + std::to_string(given.GetInt());
      } else {
        interpreter.RaiseError(ERR_BAD_ARGUMENT);
      }
    }
    SerialPorts* const ports = interpreter.services.serialPorts;
    if (!port_ && ports) {
      port_ = ports->open(name);
      if (port_) {
        portName_ = name;
        Result(1);
        return;
      }
    }
    Result(0);
  }

  void ClosePort() { port_.reset(); }

  void SetRate() {
    if (!port_) {
      Result(0);
      return;
    }
    RequireOneArgument();
    const auto rate = static_cast<uint32_t>(NumberArgument());
    if (std::find(std::begin(kRates), std::end(kRates), rate) == std::end(kRates)) {
      interpreter.RaiseError(ERR_BAD_ARGUMENT);
    }
    Result(port_->setRate(rate));
  }

  void GetRate() {
    const uint32_t rate = port_ ? port_->rate() : 0;
    const bool isKnown = std::find(std::begin(kRates), std::end(kRates), rate) != std::end(kRates);
    Result(isKnown ? static_cast<int32_t>(rate) : 0);
  }

  void Send() {
    RequireOneArgument();
    const CValue& value = *interpreter.GetArg(0);
    const bool isFramed = mode_ == kModeFramed;
    if (value.type <= VT_FLOAT) {
      const int32_t number = value.GetInt();
      Result(port_ && (isFramed ? SendFramedInteger(*this, number) : SendRawInteger(*this, number)));
    } else if (value.type == VT_STRING) {
      const std::string text(value.StringView());
      Result(port_ && (isFramed ? SendFramedText(*this, text) : SendRawText(*this, text)));
    } else if (value.IsObjectOfClass(CLASS_BINARY)) {
      const auto& block = static_cast<const CIBinary&>(*value.data.object);
      const std::span<const uint8_t> bytes = block.Bytes();
      const auto tag = static_cast<uint32_t>(block.ByteOrder());
      Result(port_ && (isFramed ? SendFramedBlock(*this, tag, bytes.data(), bytes.size())
                                : bytes.empty() || Write(bytes.data(), bytes.size())));
    } else {
      interpreter.RaiseError(ERR_BAD_ARGUMENT);
    }
  }

  void ReceiveLong() {
    int32_t value = 0;
    const bool isRead =
        port_ && (mode_ == kModeFramed ? ReceiveFramedInteger(*this, &value) : ReceiveRawInteger(*this, &value));
    Result(isRead ? value : 0);
  }

  void ReceiveDouble() {
    double value = 0;
    const bool isRead =
        port_ && (mode_ == kModeFramed ? ReceiveFramedDouble(*this, &value) : ReceiveRawDouble(*this, &value));
    interpreter.GetResult().SetFloat(isRead ? value : 0);
  }

  void ReceiveString() {
    std::string text;
    const bool isRead =
        port_ && (mode_ == kModeFramed ? ReceiveFramedText(*this, &text) : ReceiveRawText(*this, &text));
    interpreter.GetResult().SetString(isRead ? text : std::string());
  }

  void ReceiveBinary() {
    CIBinary* target = nullptr;
    std::optional<int32_t> size;
    if (interpreter.GetArgCount() > 2) interpreter.RaiseError(ERR_ARGUMENT_COUNT);
    for (int i = 0; i < interpreter.GetArgCount(); ++i) {
      const CValue& argument = *interpreter.GetArg(i);
      if (argument.IsObjectOfClass(CLASS_BINARY) && !target) {
        target = static_cast<CIBinary*>(argument.data.object);
      } else if (argument.type <= VT_FLOAT && !size) {
        size = argument.GetInt();
      } else {
        interpreter.RaiseError(ERR_BAD_ARGUMENT);
      }
    }
    if (!target) {
      auto made = std::make_unique<CIBinary>(interpreter);
      made->Create();
      target = made.release();
    }
    interpreter.GetResult().SetObject(target);
    target->Allocate(0);
    SerialBlock block;
    bool isRead = false;
    if (port_ && mode_ == kModeFramed) {
      isRead = ReceiveFramedBlock(*this, &block);
      if (isRead) target->SetByteOrderOf(block.tag);
    } else if (port_) {
      int32_t count = size.value_or(0);
      isRead = (size || ReceiveRawInteger(*this, &count)) &&
               ReceiveRawBytes(*this, static_cast<uint32_t>(count), &block.bytes);
    }
    if (!isRead || block.bytes.empty()) return;
    if (!target->Allocate(static_cast<int64_t>(block.bytes.size()))) interpreter.RaiseError(ERR_MEMORY);
    std::memcpy(target->Data(), block.bytes.data(), block.bytes.size());
  }

  void SetMode() {
    RequireOneArgument();
    const int32_t mode = interpreter.IsArgDefault(0) ? kModeFramed : NumberArgument();
    if (mode != kModeRaw && mode != kModeFramed) interpreter.RaiseError(ERR_BAD_ARGUMENT);
    mode_ = mode;
    Result(1);
  }

  void GetMode() { Result(mode_); }
  void IsOpen() { Result(port_ != nullptr); }
  void GetPortName() { interpreter.GetResult().SetString(portName_); }
  void GetTimeOut() { Result(timeoutMs_); }

  void SetTimeOut() {
    RequireOneArgument();
    const int32_t ms = NumberArgument();
    if (port_) timeoutMs_ = ms;
    Result(port_ != nullptr);
  }

 private:
  void Result(int32_t v) { interpreter.GetResult().SetInt(v); }
  void RequireOneArgument() {
    if (interpreter.GetArgCount() != 1) interpreter.RaiseError(ERR_ARGUMENT_COUNT);
  }
  int32_t NumberArgument() {
    if (interpreter.GetArg(0)->type > VT_FLOAT) interpreter.RaiseError(ERR_BAD_ARGUMENT);
    return interpreter.GetArgInt(0);
  }

  // Calls `step` with the place reached until all is done. The time-out is one per byte; 0 waits for ever. Events are
  // taken in meanwhile, for later.
  template <typename Step>
  bool Transfer(size_t size, Step&& step) {
    const uint64_t limitMs = static_cast<uint64_t>(size) * static_cast<uint32_t>(timeoutMs_);
    uint64_t waitedMs = 0;
    for (size_t done = 0; done < size;) {
      const int64_t moved = step(done);
      if (moved < 0) return false;
      if (moved > 0) {
        done += static_cast<size_t>(moved);
        continue;
      }
      const bool isLate = timeoutMs_ != 0 ? waitedMs >= limitMs : interpreter.services.events->isExhausted();
      if (isLate || interpreter.param.stop.load(std::memory_order_relaxed)) return false;
      const uint32_t before = interpreter.NowMs();
      interpreter.messages->WaitForMessage(static_cast<int>(kPollMs));
      interpreter.messages->HasMessage();
      const uint32_t passed = interpreter.NowMs() - before;
      if (passed == 0) interpreter.services.clock->tick();
      waitedMs += interpreter.NowMs() - before;
    }
    return true;
  }

  bool Read(void* buffer, size_t size) override {
    return Transfer(size, [&](size_t done) { return port_->read(static_cast<uint8_t*>(buffer) + done, size - done); });
  }
  bool Write(const void* buffer, size_t size) override {
    return Transfer(size,
                    [&](size_t done) { return port_->write(static_cast<const uint8_t*>(buffer) + done, size - done); });
  }

  std::unique_ptr<SerialPort> port_;
  std::string portName_;
  int32_t mode_ = kModeFramed;
  int32_t timeoutMs_ = 5000;
};

constexpr MemberRow Constant(uint16_t id, const char* name, uint32_t value) {
  return {id, name, MemberKind::Constant, nullptr, value, 0, "transfer mode"};
}

constexpr MemberRow kRows[] = {
    Row(1, "OpenPort", kMember<&CISerial::OpenPort>, "OpenPort(port): a name, or the number of a COM port; 1 or 0"),
    Row(2, "ClosePort", kMember<&CISerial::ClosePort>, "ClosePort()"),
    Row(3, "SetRate", kMember<&CISerial::SetRate>, "SetRate(rate): in bits per second; 1 or 0"),
    Row(4, "GetRate", kMember<&CISerial::GetRate>, "GetRate(): in bits per second, or 0"),
    Row(5, "Send", kMember<&CISerial::Send>, "Send(value): a number, a text or a Binary; 1 or 0"),
    Row(6, "ReceiveLong", kMember<&CISerial::ReceiveLong>, "ReceiveLong(): an integer"),
    Row(7, "ReceiveDouble", kMember<&CISerial::ReceiveDouble>, "ReceiveDouble(): a float"),
    Row(8, "ReceiveString", kMember<&CISerial::ReceiveString>, "ReceiveString(): a text"),
    Row(9, "ReceiveBinary", kMember<&CISerial::ReceiveBinary>, "ReceiveBinary(binary, size): a Binary"),
    Row(10, "SetMode", kMember<&CISerial::SetMode>, "SetMode(mode): TRANSFER_MODE_RAW or TRANSFER_MODE_VORLANE"),
    Row(11, "GetMode", kMember<&CISerial::GetMode>, "GetMode()"),
    Row(12, "IsOpen", kMember<&CISerial::IsOpen>, "IsOpen(): 1 or 0"),
    Row(13, "GetPortName", kMember<&CISerial::GetPortName>, "GetPortName()"),
    Row(14, "SetTimeOut", kMember<&CISerial::SetTimeOut>, "SetTimeOut(ms): for each byte; 1 or 0"),
    Row(15, "GetTimeOut", kMember<&CISerial::GetTimeOut>, "GetTimeOut(): in ms"),
    Constant(17, "TRANSFER_MODE_UNKNOWN", kModeUnknown),
    Constant(18, "TRANSFER_MODE_RAW", kModeRaw),
    Constant(19, "TRANSFER_MODE_VORLANE", kModeFramed),
};

}  // namespace

const ClassTable kSerialClass = {CLASS_SERIAL, kRows, &CreateObject<CISerial>, "A serial port"};

}  // namespace vl
