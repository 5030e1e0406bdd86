// Arrays across the host boundary, through the public headers only: a host's list reaches a
// script as an array it can index and assign (as a variable, a method's answer or an argument
// of call()), and a script's array reaches the host as values it can read with as<T>().
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "lxbasic/bridge.h"
#include "lxbasic/script.h"
#include "lxbasic/text.h"
#include "lxbasic/variant.h"

namespace {

using lx::Variant;

class Document : public lx::Object {
 public:
  Variant paragraphs() const {
    return Variant::from(std::vector<Variant>{
        Variant::fromUtf8("Title"), Variant::fromUtf8("Body"),
        Variant::from(std::vector<Variant>{Variant::int32(1), Variant::int32(2)})});
  }
  int count(const Variant& list) const {
    auto items = list.as<std::vector<Variant>>();
    return items ? static_cast<int>(items->size()) : -1;
  }
  std::string first(const Variant& list) const {
    auto items = list.as<std::vector<Variant>>();
    return items && !items->empty() ? items->front().as<std::string>().value_or("?") : "none";
  }
};

void registerDocument() {
  static bool done = false;
  if (done) return;
  done = true;
  lx::ClassBuilder<Document>("ArrayDocument")
      .method("Paragraphs", &Document::paragraphs)
      .method("CountOf:", &Document::count)
      .method("FirstOf:", &Document::first);
}

struct Host {
  explicit Host(bool reference) {
    registerDocument();
    script.setReferenceEvaluator(reference);
    script.addObj(std::make_shared<Document>());
  }
  std::u16string run(std::string_view text) {
    script.setScript(text);
    Variant result = script.runScript();
    EXPECT_FALSE(script.failed()) << lx::toUtf8(script.error() ? script.error()->description()
                                                               : u"an exception");
    return lx::toText(result);
  }
  lx::LxBasicScript script;
};

class HostArrays : public ::testing::TestWithParam<bool> {};

TEST_P(HostArrays, AHostsListIsAnArrayTheScriptCanIndexAndAssign) {
  Host h(GetParam());
  std::vector<Variant> rows{Variant::int32(1), Variant::fromUtf8("two"), Variant()};
  h.script.addVarWithName(u"hv", Variant::from(rows));
  EXPECT_EQ(h.run("DIM RESULT = hv(1) & UBound(hv)\nhv(0) = 5\nRESULT = RESULT & (hv(0) + 1)"),
            u"two26");
  // The script works on its own copy: the host's list is as it was.
  EXPECT_EQ(rows[0].as<int>(), 1);
  EXPECT_EQ(h.run("DIM p = Paragraphs\nDIM inner = p(2)\n"
                  "RESULT = p(0) & \"/\" & p(1) & \"/\" & inner(1) & UBound(p)"),
            u"Title/Body/22");
}

TEST_P(HostArrays, AScriptsArrayReachesTheHostAsValues) {
  Host h(GetParam());
  EXPECT_EQ(h.run("DIM a = Array(\"x\", 2, Array(3))\nDIM RESULT = CountOf(a) & FirstOf(a)"),
            u"3x");
  auto items = h.script.valueOf(u"a").as<std::vector<Variant>>();
  ASSERT_TRUE(items);
  ASSERT_EQ(items->size(), 3u);
  EXPECT_EQ((*items)[0].as<std::string>(), "x");
  EXPECT_EQ((*items)[1].as<int>(), 2);
  auto nested = (*items)[2].as<std::vector<Variant>>();
  ASSERT_TRUE(nested);
  EXPECT_EQ((*nested)[0].as<double>(), 3.0);
  // The element itself, as the array holds it, reads the same.
  auto list = h.script.valueOf(u"a").as<lx::ArrayRef>();
  ASSERT_TRUE(list);
  EXPECT_EQ((*list)->items[0].as<std::string>(), "x");
  // A DIM'd array's rows are lists of slots as well.
  h.run("DIM m(1, 1)\nm(1, 0) = \"r\"");
  auto rows = h.script.valueOf(u"m").as<std::vector<Variant>>();
  ASSERT_TRUE(rows);
  EXPECT_EQ((*rows)[1].as<std::vector<Variant>>()->at(0).as<std::string>(), "r");
}

TEST_P(HostArrays, CallPassesAHostsListAsAnArray) {
  Host h(GetParam());
  h.run("FUNCTION Second(list)\n  list(0) = 9\n  Second = list(1) & list(0)\nEND FUNCTION");
  Variant list = Variant::from(std::vector<Variant>{Variant::int32(4), Variant::int32(7)});
  EXPECT_EQ(lx::toText(h.script.call(u"Second", {list})), u"79");
  EXPECT_TRUE(h.script.succeeded());
}

INSTANTIATE_TEST_SUITE_P(BothModes, HostArrays, ::testing::Values(false, true),
                         [](const auto& info) { return info.param ? "reference" : "compiled"; });

}  // namespace
