// Runs one benchmark workload at one size, for bench/measure.sh:
//
//   lxbench [--reference] [--memory] WORKLOAD.bas N   the script with every @N@ replaced by N
//   lxbench [--reference] [--memory] --create N       N script objects made and dropped
//   lxbench [--reference] [--memory] --call N         N calls of a script FUNCTION by the host
//
// The scripts of workloads whose file name begins with "host" have a host object whose method
// Twice(n) answers 2 * n, to measure the crossing from a script into the host; the others have
// none, since every procedure call binds the host objects its frame sees.
//
// --memory prints the peak resident set size to standard error at the end.
//
// A run that ends with an error fails (exit 1): a workload that stops early measures nothing.
#include <sys/resource.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

#include "lxbasic/bridge.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/script.h"
#include "lxbasic/text.h"

namespace {

int usage() {
  std::fprintf(stderr,
               "usage: lxbench [--reference] [--memory] (WORKLOAD.bas | --create | --call) N\n");
  return 2;
}

std::string instantiate(const std::string& path, const std::string& n) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path);
  std::stringstream buffer;
  buffer << file.rdbuf();
  std::string text = buffer.str();
  for (size_t at = text.find("@N@"); at != std::string::npos; at = text.find("@N@", at)) {
    text.replace(at, 3, n);
  }
  return text;
}

class BenchHost : public lx::Object {
 public:
  int32_t twice(int32_t n) const { return 2 * n; }
};

void addBenchHost(lx::LxBasicScript& script) {
  static const bool registered = [] {
    lx::ClassBuilder<BenchHost>("BenchHost").method("Twice:", &BenchHost::twice);
    return true;
  }();
  (void)registered;
  script.addObj(std::make_shared<BenchHost>());
}

int failed(const lx::LxBasicScript& script) {
  if (auto err = script.error(); err && err->code() > 0) {
    std::fprintf(stderr, "lxbench: %s\n", lx::toUtf8(err->description()).c_str());
    return 1;
  }
  return 0;
}

int runWorkload(const std::string& path, const std::string& n, bool reference) {
  lx::LxBasicScript script;
  script.setReferenceEvaluator(reference);
  const std::string file = path.substr(path.find_last_of('/') + 1);
  if (file.starts_with("host")) addBenchHost(script);
  script.setScript(std::string_view(instantiate(path, n)));
  lx::Variant result = script.runScript();
  if (failed(script)) return 1;
  std::printf("%s\n", lx::toUtf8(lx::toText(result)).c_str());
  return 0;
}

// The host calling into the script: one FUNCTION, called with one argument each time.
int callFunction(long count, bool reference) {
  lx::LxBasicScript script;
  script.setReferenceEvaluator(reference);
  script.setScript(u"FUNCTION Bump(n)\nBump = n + 1\nEND FUNCTION");
  script.runScript();
  if (failed(script)) return 1;
  lx::Variant value = lx::Variant::int32(0);
  // A failed call answers Empty, which the next call counts on from 0: the end shows it.
  for (long i = 0; i < count; ++i) value = script.call(u"Bump", {value});
  if (failed(script) || lx::toText(value) != lx::toText(lx::Variant::int64(count))) return 1;
  std::printf("%s\n", lx::toUtf8(lx::toText(value)).c_str());
  return 0;
}

int createScripts(long count, bool reference) {
  for (long i = 0; i < count; ++i) {
    lx::LxBasicScript script;
    script.setReferenceEvaluator(reference);
  }
  return 0;
}

void printPeakMemory() {
  rusage usage{};
  if (getrusage(RUSAGE_SELF, &usage) == 0) {
    std::fprintf(stderr, "peak resident set: %ld KiB\n", usage.ru_maxrss);
  }
}

}  // namespace

int main(int argc, char** argv) {
  int at = 1;
  bool reference = false;
  bool memory = false;
  for (; at < argc && std::string_view(argv[at]).starts_with("--") &&
         std::string_view(argv[at]) != "--create" && std::string_view(argv[at]) != "--call";
       ++at) {
    std::string_view option = argv[at];
    if (option == "--reference") {
      reference = true;
    } else if (option == "--memory") {
      memory = true;
    } else {
      return usage();
    }
  }
  if (argc - at != 2) return usage();
  std::string what = argv[at];
  std::string n = argv[at + 1];
  if (n.empty() || n.find_first_not_of("0123456789") != std::string::npos) return usage();
  try {
    int status = what == "--create" ? createScripts(std::stol(n), reference)
                 : what == "--call" ? callFunction(std::stol(n), reference)
                                    : runWorkload(what, n, reference);
    if (memory) printPeakMemory();
    return status;
  } catch (...) {
    std::fprintf(stderr, "lxbench: %s\n", lx::describeException(std::current_exception()).c_str());
    return 1;
  }
}
