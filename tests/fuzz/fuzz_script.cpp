// Script text from the fuzzer through the public API, with the limits a careful host sets.
// Every input must end: no crash, no sanitizer report, no leak, no hang past the limit.
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string_view>

#include "lxbasic/dialogs.h"
#include "lxbasic/script.h"

namespace {

// Dialogs answer at once, as if nobody were there.
class NobodyThere final : public lx::DialogProvider {
 public:
  int runAlert(const lx::AlertRequest&, const lx::StopPoll&) override { return lx::kAlertNoAnswer; }
  lx::InputAnswer runInput(const lx::InputRequest&, const lx::StopPoll&) override { return {}; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const auto dialogs = std::make_shared<NobodyThere>();
  lx::LxBasicScript script;
  script.setDialogProvider(dialogs);
  script.setMemoryLimit(int64_t{32} << 20);
  script.setTimeLimit(std::chrono::milliseconds(300));
  script.setScript(std::string_view(reinterpret_cast<const char*>(data), size));
  try {
    script.runScript();
  } catch (const std::exception&) {
    // A failure that a host method or ECHO raises reaches the host as an exception: allowed.
  }
  return 0;
}
