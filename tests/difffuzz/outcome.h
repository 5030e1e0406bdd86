// What one run of a script leaves behind that a host or the script itself can observe: the
// value of RESULT, the error record, an exception that escaped, and every variable. Two runs
// of the same text, one per evaluator, must leave identical outcomes.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace difffuzz {

struct Outcome {
  std::string result;  // kind and text of RESULT, as renderValue prints it
  bool hasError = false;
  int code = 0;
  std::string desc;
  std::string line;
  int lineNumber = -1;
  std::string exception;                    // what escaped runScript, "" when nothing did
  std::map<std::string, std::string> vars;  // name -> rendered value; temporaries left out
  std::string host;                         // the state of the host object after the run
  bool timedOut = false;                    // the run was stopped by the time limit
  // The next run of the same script object, if there was one.
  std::shared_ptr<const Outcome> next;
};

// Runs `program` in a fresh script object, with a fresh Tally as its host object (after the
// library), on the calling thread, through the reference
// evaluator when `reference` is set, `runs` times in a row. Variables, procedures and open
// blocks persist from run to run, so a later run meets names an earlier one left behind. A
// run that outlives `limit` is stopped after its current line, marked timedOut, and is the
// last.
Outcome runProgram(const std::string& program, bool reference, std::chrono::milliseconds limit,
                   int runs = 1);

// One line per observation that differs ("RESULT: ... | ..."); empty when the two agree.
std::vector<std::string> differences(const Outcome& fast, const Outcome& reference);

// The whole outcome, one observation per line, for reports.
std::string describe(const Outcome& outcome);

}  // namespace difffuzz
