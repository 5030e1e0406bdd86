// Differential fuzzer: runs random programs on the compiled lines and on the reference
// evaluator and stops at the first program whose outcomes differ.
//
//   difffuzz [--count N] [--seed S] [--seconds T] [--limit-ms L] [--out DIR] [--no-minimise]
//            [--verbose] [--self-check]
//   difffuzz --print SEED        show the program of one seed
//   difffuzz --replay FILE       compare the two evaluators on one script file
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>

#include "difffuzz/minimiser.h"
#include "difffuzz/outcome.h"
#include "difffuzz/program_generator.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Options {
  uint64_t count = 1000;
  uint64_t seed = 1;
  double seconds = 0;  // 0: no time budget
  std::chrono::milliseconds limit{10000};
  std::string out = ".";
  bool minimise = true;
  bool print = false;
  bool verbose = false;
  bool selfCheck = false;  // compare the reference evaluator with itself  // one line per program:
                           // how the reference run ended
  std::string replay;
};

[[noreturn]] void usage(const std::string& problem) {
  std::cerr << "difffuzz: " << problem << "\n"
            << "usage: difffuzz [--count N] [--seed S] [--seconds T] [--limit-ms L] [--out DIR]"
               " [--no-minimise] [--verbose] [--self-check]\n"
               "       difffuzz --print SEED | --replay FILE\n";
  std::exit(2);
}

uint64_t number(std::string_view option, const char* text) {
  try {
    size_t used = 0;
    uint64_t value = std::stoull(text, &used);
    if (used == std::string_view(text).size()) return value;
  } catch (const std::exception&) {
  }
  usage(std::string(option) + " needs a whole number, not \"" + text + "\"");
}

Options parse(int argc, char** argv) {
  Options o;
  for (int i = 1; i < argc; ++i) {
    std::string_view arg = argv[i];
    auto value = [&]() -> const char* {
      if (i + 1 >= argc) usage(std::string(arg) + " needs a value");
      return argv[++i];
    };
    if (arg == "--count") {
      o.count = number(arg, value());
    } else if (arg == "--seed") {
      o.seed = number(arg, value());
    } else if (arg == "--seconds") {
      o.seconds = static_cast<double>(number(arg, value()));
    } else if (arg == "--limit-ms") {
      o.limit = std::chrono::milliseconds(number(arg, value()));
    } else if (arg == "--out") {
      o.out = value();
    } else if (arg == "--self-check") {
      o.selfCheck = true;
    } else if (arg == "--verbose") {
      o.verbose = true;
    } else if (arg == "--no-minimise") {
      o.minimise = false;
    } else if (arg == "--print") {
      o.seed = number(arg, value());
      o.print = true;
    } else if (arg == "--replay") {
      o.replay = value();
    } else {
      usage("unknown option " + std::string(arg));
    }
  }
  return o;
}

struct Comparison {
  difffuzz::Outcome fast;
  difffuzz::Outcome reference;
  std::vector<std::string> differences;
};

// With selfCheck both runs use the reference evaluator: any difference then comes from the
// engine or the comparison itself, not from the fast path.
bool selfCheck = false;

// Each program runs twice on one script object: the second run meets the variables,
// procedures and blocks the first left behind, so names bound once may mean something else.
constexpr int kRuns = 2;

Comparison compare(const std::string& program, std::chrono::milliseconds limit) {
  Comparison c;
  c.fast = difffuzz::runProgram(program, selfCheck, limit, kRuns);
  c.reference = difffuzz::runProgram(program, true, limit, kRuns);
  c.differences = difffuzz::differences(c.fast, c.reference);
  return c;
}

// Both stopped by the limit: each at some line of an endless run, so their states need not
// agree.
bool bothStopped(const Comparison& c) {
  return c.fast.timedOut && c.reference.timedOut;
}

void writeFile(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  if (!file) std::cerr << "difffuzz: cannot write " << path << "\n";
}

int report(const std::string& label, const std::string& program, const Comparison& c,
           const Options& o) {
  std::cout << "DIFFERENCE for " << label << "\n--- program\n"
            << program << "--- compiled lines\n"
            << difffuzz::describe(c.fast) << "--- reference evaluator\n"
            << difffuzz::describe(c.reference) << "--- differences (compiled | reference)\n";
  for (const auto& d : c.differences) std::cout << "  " << d << "\n";
  std::string base = o.out + "/difffuzz-" + label;
  writeFile(base + ".bas", program);
  std::cout << "written to " << base << ".bas\n";
  if (o.minimise) {
    // A shorter limit: dropping lines may leave a loop without its counter.
    auto limit = std::min(o.limit, std::chrono::milliseconds(2000));
    std::string small = difffuzz::minimise(program, [&](const std::string& candidate) {
      return !compare(candidate, limit).differences.empty();
    });
    writeFile(base + ".min.bas", small);
    std::cout << "--- minimised (" << base << ".min.bas)\n" << small;
    Comparison m = compare(small, limit);
    for (const auto& d : m.differences) std::cout << "  " << d << "\n";
  }
  return 1;
}

int replay(const Options& o) {
  std::ifstream file(o.replay, std::ios::binary);
  if (!file) usage("cannot read " + o.replay);
  std::stringstream text;
  text << file.rdbuf();
  Comparison c = compare(text.str(), o.limit);
  if (bothStopped(c)) {
    std::cout << "no end in either mode; not compared\n";
    return 0;
  }
  if (!c.differences.empty()) return report("replay", text.str(), c, o);
  std::cout << "no difference\n" << difffuzz::describe(c.reference);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  Options o = parse(argc, argv);
  selfCheck = o.selfCheck;
  if (o.print) {
    std::cout << difffuzz::generateProgram(o.seed);
    return 0;
  }
  if (!o.replay.empty()) return replay(o);

  auto start = Clock::now();
  uint64_t run = 0, failed = 0, clean = 0, stopped = 0, escaped = 0;
  for (; run < o.count; ++run) {
    double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
    if (o.seconds > 0 && elapsed >= o.seconds) break;
    uint64_t seed = o.seed + run;
    std::string program = difffuzz::generateProgram(seed);
    Comparison c = compare(program, o.limit);
    if (bothStopped(c)) {
      ++stopped;
      std::cout << "seed " << seed << ": no end in either mode; not compared\n";
      continue;
    }
    if (!c.differences.empty()) return report("seed-" + std::to_string(seed), program, c, o);
    if (o.verbose) {
      std::cout << "seed " << seed << ": error " << c.reference.code << " at line "
                << c.reference.lineNumber << " \"" << c.reference.desc << "\" " << c.reference.line
                << (c.reference.exception.empty() ? "" : " exception ") << c.reference.exception
                << "\n";
    }
    if (!c.reference.exception.empty()) ++escaped;
    if (c.reference.code > 0) ++failed;
    if (!c.reference.hasError || c.reference.code <= 0) ++clean;
  }
  double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
  std::printf(
      "%llu programs (seeds %llu to %llu) agree in %.1f s: %llu ended normally, %llu with an "
      "error, %llu with an exception, %llu not compared (no end in either mode)\n",
      static_cast<unsigned long long>(run), static_cast<unsigned long long>(o.seed),
      static_cast<unsigned long long>(o.seed + run - (run ? 1 : 0)), elapsed,
      static_cast<unsigned long long>(clean), static_cast<unsigned long long>(failed),
      static_cast<unsigned long long>(escaped), static_cast<unsigned long long>(stopped));
  return 0;
}
