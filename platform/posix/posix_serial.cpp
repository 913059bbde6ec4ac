#include "platform/posix/posix_serial.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "platform/posix/posix_file_system.h"

namespace vl {
namespace {

struct Rate {
  uint32_t bits;
  speed_t speed;
};

// The ones that the system has; 14400, 56000, 128000 and 256000 are not among them.
constexpr Rate kRates[] = {{110, B110},     {300, B300},     {600, B600},      {1200, B1200},
                           {2400, B2400},   {4800, B4800},   {9600, B9600},    {19200, B19200},
                           {38400, B38400}, {57600, B57600}, {115200, B115200}};

class PosixSerialPort final : public SerialPort {
 public:
  explicit PosixSerialPort(FileHandle handle) : handle_(std::move(handle)) {}
  ~PosixSerialPort() override { ioctl(handle_.Get(), TIOCNXCL); }

  int64_t read(void* buffer, size_t size) override { return Answer(::read(handle_.Get(), buffer, size)); }
  int64_t write(const void* buffer, size_t size) override { return Answer(::write(handle_.Get(), buffer, size)); }

  bool setRate(uint32_t rate) override {
    termios line{};
    if (tcgetattr(handle_.Get(), &line) != 0) return false;
    for (const Rate& known : kRates) {
      if (known.bits != rate) continue;
      cfsetispeed(&line, known.speed);
      cfsetospeed(&line, known.speed);
      return tcsetattr(handle_.Get(), TCSANOW, &line) == 0;
    }
    return false;
  }

  uint32_t rate() override {
    termios line{};
    if (tcgetattr(handle_.Get(), &line) != 0) return 0;
    for (const Rate& known : kRates) {
      if (known.speed == cfgetospeed(&line)) return known.bits;
    }
    return 0;
  }

 private:
  static int64_t Answer(ssize_t done) {
    if (done >= 0) return done;
    return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR ? 0 : -1;
  }

  FileHandle handle_;
};

std::unique_ptr<SerialPort> OpenDevice(const std::string& path) {
  FileHandle handle(::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  termios line{};
  if (!handle.IsOpen() || tcgetattr(handle.Get(), &line) != 0) return nullptr;
  // Not shared: a second open fails from here on.
  if (ioctl(handle.Get(), TIOCEXCL) != 0) return nullptr;
  cfmakeraw(&line);
  line.c_cflag |= CLOCAL | CREAD;
  line.c_cflag &= ~static_cast<tcflag_t>(CSTOPB);
  line.c_cc[VMIN] = 0;
  line.c_cc[VTIME] = 0;
  if (tcsetattr(handle.Get(), TCSANOW, &line) != 0) return nullptr;
  return std::make_unique<PosixSerialPort>(std::move(handle));
}

}  // namespace

std::unique_ptr<SerialPort> PosixSerialPorts::open(std::string_view name) {
  const uint32_t number = SerialPortNumber(name);
  if (number == 0) return nullptr;
  if (const char* device = std::getenv(("VORLANE_COM" + std::to_string(number)).c_str())) return OpenDevice(device);
  for (const char* kind : {"/dev/ttyS", "/dev/ttyUSB", "/dev/ttyACM"}) {
    if (auto port = OpenDevice(kind + std::to_string(number - 1))) return port;
  }
  return nullptr;
}

}  // namespace vl
