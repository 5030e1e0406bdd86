#include <algorithm>
#include <cctype>
#include <optional>
#include <string>
#include <vector>

#include "lxbasic/check.h"
#include "lxbasic/text.h"

namespace lx {

namespace {

using Kind = CheckFinding::Kind;

enum class Block { If, For, While, Do, Sub, Function };

struct BlockWords {
  Block block;
  const char* opener;
  const char* closer;
};

// The closers' "... without ..." texts are the engine's own error messages where it has one.
constexpr BlockWords kBlocks[] = {
    {Block::If, "IF", "END IF"},     {Block::For, "FOR", "NEXT"},
    {Block::While, "WHILE", "WEND"}, {Block::Do, "DO", "LOOP"},
    {Block::Sub, "SUB", "END SUB"},  {Block::Function, "FUNCTION", "END FUNCTION"},
};

const BlockWords& wordsOf(Block b) {
  return kBlocks[static_cast<size_t>(b)];
}

struct OpenBlock {
  Block block;
  int32_t line;
};

std::string upper(std::string_view s) {
  std::string u(s);
  for (char& c : u) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return u;
}

// Blank-delimited words, as the engine's keyword search sees them (inside strings too).
std::vector<std::string> wordsOf(std::string_view statement) {
  std::vector<std::string> words;
  size_t i = 0;
  while (i < statement.size()) {
    while (i < statement.size() && statement[i] == ' ') ++i;
    size_t start = i;
    while (i < statement.size() && statement[i] != ' ') ++i;
    if (i > start) words.push_back(upper(statement.substr(start, i - start)));
  }
  return words;
}

std::string_view trimmed(std::string_view s) {
  auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
  while (!s.empty() && blank(s.front())) s.remove_prefix(1);
  while (!s.empty() && blank(s.back())) s.remove_suffix(1);
  return s;
}

bool startsWithRem(std::string_view statement) {
  statement = trimmed(statement);
  return statement.size() >= 3 && upper(statement.substr(0, 3)) == "REM" &&
         (statement.size() == 3 || statement[3] == ' ' || statement[3] == '\t');
}

class Checker {
 public:
  void line(std::string_view text, int32_t number) {
    std::string statement;
    bool inString = false;
    int depth = 0;
    for (size_t i = 0; i <= text.size(); ++i) {
      if (trimmed(statement).empty() && startsWithRem(text.substr(i))) break;
      if (i == text.size()) break;
      char c = text[i];
      if (c == '"') inString = !inString;
      if (!inString && c == '(') ++depth;
      if (!inString && c == ')') {
        if (depth == 0) {
          add(number, Kind::Brackets, "closing bracket without an opening one");
        } else {
          --depth;
        }
      }
      if (!inString && depth == 0 && c == ':') {
        statementDone(statement, number);
        statement.clear();
        continue;
      }
      statement += c == '\t' ? ' ' : c;
    }
    statementDone(statement, number);
    if (inString) add(number, Kind::Quotes, "string not closed: a double quote is missing");
    if (depth > 0) {
      add(number, Kind::Brackets,
          depth == 1 ? "bracket not closed" : std::to_string(depth) + " brackets not closed");
    }
  }

  std::vector<CheckFinding> finish(bool continued, int32_t lastLine) {
    if (continued) add(lastLine, Kind::Unclosed, "the last line continues (\"_\") past the end");
    for (const OpenBlock& b : open_) {
      add(b.line, Kind::Unclosed,
          std::string(wordsOf(b.block).opener) + " without " + wordsOf(b.block).closer);
    }
    std::stable_sort(findings_.begin(), findings_.end(),
                     [](const auto& a, const auto& b) { return a.lineNumber < b.lineNumber; });
    return std::move(findings_);
  }

 private:
  void add(int32_t line, Kind kind, std::string message) {
    findings_.push_back({line, kind, std::move(message)});
  }

  void statementDone(std::string_view statement, int32_t number) {
    std::vector<std::string> w = wordsOf(trimmed(statement));
    if (w.empty() || w[0] == "REM") return;
    const std::string& w1 = w[0];
    const std::string w2 = w.size() > 1 ? w[1] : "";
    if (w1 == "IF") {
      auto then = std::find(w.begin(), w.end(), "THEN");
      if (then == w.end()) return add(number, Kind::Statement, "IF without THEN");
      if (then + 1 == w.end()) open(Block::If, number);
    } else if (w1 == "ELSE") {
      if (open_.empty() || open_.back().block != Block::If) {
        add(number, Kind::Unmatched, "ELSE without IF");
      }
    } else if ((w1 == "END" && w2 == "IF") || w2 == "ENDIF") {
      close(Block::If, number);
    } else if (w1 == "ENDIF" && w.size() == 1) {
      add(number, Kind::Statement, "ENDIF alone does not close a block: write END IF");
    } else if (w1 == "END" && (w2 == "SUB" || w2 == "FUNCTION")) {
      close(w2 == "SUB" ? Block::Sub : Block::Function, number);
    } else if (auto opened = openerOf(w1)) {
      open(*opened, number);
    } else if (auto closed = closerOf(w1)) {
      close(*closed, number);
    }
  }

  static std::optional<Block> openerOf(const std::string& word) {
    for (Block b : {Block::For, Block::While, Block::Do, Block::Sub, Block::Function}) {
      if (word == wordsOf(b).opener) return b;
    }
    return std::nullopt;
  }

  static std::optional<Block> closerOf(const std::string& word) {
    for (Block b : {Block::For, Block::While, Block::Do}) {
      if (word == wordsOf(b).closer) return b;
    }
    return std::nullopt;
  }

  void open(Block b, int32_t line) { open_.push_back({b, line}); }

  // A closer meets the innermost open block of its kind; blocks opened inside that one and
  // still open were forgotten, and a closer with none of its kind open closes twice.
  void close(Block b, int32_t line) {
    auto match = std::find_if(open_.rbegin(), open_.rend(),
                              [b](const OpenBlock& o) { return o.block == b; });
    const BlockWords& words = wordsOf(b);
    if (match == open_.rend()) {
      add(line, Kind::Unmatched, std::string(words.closer) + " without " + words.opener);
      return;
    }
    size_t keep = open_.size() - 1 - static_cast<size_t>(match - open_.rbegin());
    for (size_t i = keep + 1; i < open_.size(); ++i) {
      const BlockWords& inner = wordsOf(open_[i].block);
      add(open_[i].line, Kind::Unclosed,
          std::string(inner.opener) + " without " + inner.closer + " before the " + words.closer +
              " on line " + std::to_string(line));
    }
    open_.resize(keep);
  }

  std::vector<OpenBlock> open_;
  std::vector<CheckFinding> findings_;
};

}  // namespace

std::vector<CheckFinding> checkScript(std::string_view utf8) {
  Checker checker;
  std::string logical;  // lines joined by continuation
  int32_t logicalStart = 0, number = 0;
  bool continued = false;
  size_t pos = 0;
  while (pos < utf8.size()) {
    size_t end = utf8.find_first_of("\r\n", pos);
    if (end == std::string_view::npos) end = utf8.size();
    std::string_view raw = utf8.substr(pos, end - pos);
    pos = end;
    if (pos < utf8.size() && utf8[pos] == '\r' && pos + 1 < utf8.size() && utf8[pos + 1] == '\n')
      ++pos;
    if (pos < utf8.size()) ++pos;
    ++number;
    if (!continued) logicalStart = number;
    std::string_view body = trimmed(raw);
    continued = !body.empty() && body.back() == '_';
    if (continued) {
      logical.append(body.substr(0, body.size() - 1));
      logical += ' ';
      continue;
    }
    logical.append(raw);
    checker.line(logical, logicalStart);
    logical.clear();
  }
  if (continued) checker.line(logical, logicalStart);
  return checker.finish(continued, number);
}

std::vector<CheckFinding> checkScript(UStringView text) {
  return checkScript(toUtf8(text));
}

bool onlyUnclosed(const std::vector<CheckFinding>& findings) {
  return std::all_of(findings.begin(), findings.end(),
                     [](const CheckFinding& f) { return f.kind == Kind::Unclosed; });
}

}  // namespace lx
