// docs/builtins.md must describe every function the library registers, under its own name,
// and list every argument count a script may use: a new built-in or form without its entry
// fails here.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "lxbasic/bridge.h"
#include "lxbasic/script.h"

namespace {

std::string reference() {
  std::ifstream in(std::string(LX_SOURCE_DIR) + "/docs/builtins.md");
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

// The first table row whose first cell names the function (alone or among others).
std::string tableRowOf(const std::string& doc, const std::string& name) {
  std::string quoted = "`" + name;
  for (size_t at = doc.find(quoted); at != std::string::npos; at = doc.find(quoted, at + 1)) {
    char after = doc[at + quoted.size()];
    size_t start = doc.rfind('\n', at) + 1;
    size_t firstCellEnd = doc.find(" |", start + 1);
    if ((after == '`' || after == '(') && doc[start] == '|' && at < firstCellEnd) {
      return doc.substr(start, doc.find('\n', at) - start);
    }
  }
  return {};
}

// Script name -> argument counts, from the library's registered selectors.
std::map<std::string, std::set<int>> registeredBuiltins() {
  lx::LxBasicScript script;  // registers the library and builds its method table
  script.setScript(std::string_view("DIM RESULT = Len(\"x\")"));
  script.runScript();
  const lx::ClassInfo* library = lx::ClassRegistry::instance().byName("LxBasicFunc");
  std::map<std::string, std::set<int>> found;
  if (library == nullptr) return found;
  for (const lx::MethodInfo& m : library->methods()) {
    std::string name = m.selector.substr(0, m.selector.find(':'));
    int count = 0;
    for (char c : m.selector) count += c == ':';
    found[name].insert(count);
  }
  return found;
}

TEST(BuiltinsReference, EveryRegisteredFunctionHasAnEntry) {
  std::string doc = reference();
  ASSERT_FALSE(doc.empty()) << "docs/builtins.md not found";
  auto builtins = registeredBuiltins();
  ASSERT_GT(builtins.size(), 90u);
  for (const auto& [name, counts] : builtins) {
    // Helpers the library keeps for itself are not script functions.
    if (name == "daysInMonth" || name == "daysInYear") continue;
    EXPECT_NE(doc.find("`" + name), std::string::npos) << name << " is not described";
  }
}

TEST(BuiltinsReference, FunctionsWithOptionalArgumentsShowEveryForm) {
  std::string doc = reference();
  for (const auto& [name, counts] : registeredBuiltins()) {
    if (counts.size() < 2 || name == "Array" || name == "Concat") continue;
    // "(s1, s2)", "(s1, s2, compare)" ...: one bracketed form per count, after the name.
    std::string row = tableRowOf(doc, name);
    ASSERT_FALSE(row.empty()) << name << " has no table row";
    std::set<int> shown;
    for (size_t open = row.find('('); open != std::string::npos; open = row.find('(', open + 1)) {
      size_t close = row.find(')', open);
      if (close == std::string::npos) break;
      std::string inside = row.substr(open + 1, close - open - 1);
      if (inside.find('"') != std::string::npos) continue;  // an example, not a form
      int commas = 0;
      for (char c : inside) commas += c == ',';
      shown.insert(inside.empty() ? 0 : commas + 1);
    }
    for (int n : counts)
      EXPECT_TRUE(shown.count(n)) << name << " lacks its " << n << "-argument form";
  }
}

}  // namespace
