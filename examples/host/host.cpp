// A small application that embeds LxBasic: it keeps a stock list, lets scripts work on it
// through an "Inventory" host object, and shows what each run answered.
#include <cstdint>
#include <cstdio>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "lxbasic/bridge.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/script.h"
#include "lxbasic/text.h"

namespace {

class Inventory : public lx::Object {
 public:
  // Add("apple", 12): whole numbers arrive already converted from the script's value.
  void add(const std::string& item, int32_t count) { stock_[item].count += count; }
  void setPrice(const std::string& item, double price) { stock_[item].price = price; }
  int32_t count(const std::string& item) const {
    auto it = stock_.find(item);
    return it == stock_.end() ? 0 : it->second.count;
  }
  // Selling more than there is is the host's rule to enforce; throwing ends the script.
  int32_t sell(const std::string& item, int32_t count) {
    Entry& entry = stock_[item];
    if (count > entry.count) {
      throw lx::InvalidArgumentException("only " + std::to_string(entry.count) + " " + item +
                                         " in stock, cannot sell " + std::to_string(count));
    }
    entry.count -= count;
    return entry.count;
  }
  double totalValue() const {
    double total = 0;
    for (const auto& [item, entry] : stock_) total += entry.count * entry.price;
    return total;
  }
  // A script value comes back as it is: here a string, or Empty for an unknown item.
  lx::Variant cheapest() const {
    const std::string* best = nullptr;
    double bestPrice = 0;
    for (const auto& [item, entry] : stock_) {
      if (entry.count > 0 && (best == nullptr || entry.price < bestPrice)) {
        best = &item;
        bestPrice = entry.price;
      }
    }
    return best ? lx::Variant::fromUtf8(*best) : lx::Variant();
  }
  // Lists cross both ways as arrays: the script indexes what Items answers, and Reorder
  // reads the items of an array the script made.
  lx::Variant items() const {
    std::vector<lx::Variant> names;
    for (const auto& [item, entry] : stock_) names.push_back(lx::Variant::fromUtf8(item));
    return lx::Variant::from(names);
  }
  int32_t reorder(const lx::Variant& list, int32_t each) {
    const auto items = list.as<std::vector<lx::Variant>>();  // no value when it is no array
    if (!items) throw lx::InvalidArgumentException("Reorder wants a list of items");
    int32_t reordered = 0;
    for (const lx::Variant& item : *items) {
      stock_[lx::toUtf8(lx::toText(item))].count += each;
      ++reordered;
    }
    return reordered;
  }

 private:
  struct Entry {
    int32_t count = 0;
    double price = 0;
  };
  std::map<std::string, Entry> stock_;
};

// Registered once, before the first script looks the class up: the method table of a class
// is built on first use and kept.
void registerInventory() {
  lx::ClassBuilder<Inventory>("Inventory")
      .method("Add:count:", &Inventory::add)
      .method("SetPrice:price:", &Inventory::setPrice)
      .method("Count:", &Inventory::count)
      .method("Sell:count:", &Inventory::sell)
      .method("TotalValue", &Inventory::totalValue)
      .method("Cheapest", &Inventory::cheapest)
      .method("Items", &Inventory::items)
      .method("Reorder:each:", &Inventory::reorder);
}

// Runs one script against the shared inventory and prints how it went.
void runAndShow(const char* title, const std::shared_ptr<Inventory>& inventory,
                const std::string& text) {
  lx::LxBasicScript script;
  script.addObj(inventory);
  script.addVarWithName(u"shop", lx::Variant(u"Corner Shop"));
  script.setTimeout(5);
  script.setScript(std::string_view(text));
  lx::Variant result = script.run();

  std::printf("== %s\n", title);
  if (!result.isEmpty()) std::printf("result: %s\n", lx::toUtf8(lx::toText(result)).c_str());
  if (std::exception_ptr thrown = script.lastException()) {
    std::printf("exception: %s\n", lx::describeException(thrown).c_str());
  } else if (lx::ErrorRef error = script.error(); error && error->code() > 0) {
    std::printf("error %d on line %d: %s\n", error->code(), error->lineNumber(),
                lx::toUtf8(error->desc()).c_str());
  }
}

}  // namespace

int main() {
  registerInventory();
  auto inventory = std::make_shared<Inventory>();

  runAndShow("stocking up", inventory,
             "Add(\"apple\", 12)\n"
             "Add(\"pear\", 5)\n"
             "SetPrice(\"apple\", 0.5)\n"
             "SetPrice(\"pear\", 1.25)\n"
             "DIM apples = Sell(\"apple\", 3)\n"
             "DIM RESULT = shop & \" has \" & apples & \" apples, worth \" & TotalValue\n");

  runAndShow("a script error", inventory,
             "DIM RESULT = \"cheapest: \" & Cheapest\n"
             "RESULT = Restock(\"plum\", 4)\n");

  runAndShow("a host exception", inventory,
             "DIM RESULT = Count(\"pear\")\n"
             "Sell(\"pear\", 50)\n"
             "RESULT = \"not reached\"\n");

  runAndShow("lists both ways", inventory,
             "DIM names = Items\n"
             "DIM RESULT = (UBound(names) + 1) & \" items, the first is \" & names(0)\n"
             "DIM order = Array(\"pear\", \"plum\")\n"
             "RESULT = RESULT & \"; reordered \" & Reorder(order, 10)\n");

  std::printf("pears left: %d, plums: %d\n", inventory->count("pear"), inventory->count("plum"));
  return 0;
}
