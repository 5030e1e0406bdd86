// Temporary stand-ins for the conditional, loop and procedure handlers; each is removed as
// its real implementation lands.
#include "interpreter/script_core.h"

namespace lx {

void ScriptCore::parseIf(const UString&) {}
void ScriptCore::parseElse(const UString&) {}
void ScriptCore::parseEndIf(const UString&) {}
void ScriptCore::parseSelectCase(const UString&) {}
void ScriptCore::parseCase(const UString&) {}
void ScriptCore::parseEndSelect(const UString&) {}
void ScriptCore::parseFor(const UString&) {}
void ScriptCore::parseNext(const UString&) {}
void ScriptCore::parseWhile(const UString&) {}
void ScriptCore::parseWEnd(const UString&) {}
void ScriptCore::parseDo(const UString&) {}
void ScriptCore::parseLoop(const UString&) {}
void ScriptCore::parseFunc(const UString&) {}
void ScriptCore::parseEndFunc(const UString&) {}
bool ScriptCore::ifValue(int32_t) const { return true; }
bool ScriptCore::validLoop() const { return true; }
LxLoopProtocol* ScriptCore::getLoop() const { return nullptr; }
void ScriptCore::parseExit(const UString&) { setError(LxError::make(kCorrectExit)); }
void ScriptCore::parseContinue(const UString&) {}
bool ScriptCore::isLoopVariable(const LxValue*) const { return false; }
ScriptCore* ScriptCore::getRootOwner() noexcept {
  ScriptCore* s = this;
  while (s->_owner) s = s->_owner;
  return s;
}
std::shared_ptr<LxBasicSubs> makeProcedureTable(ScriptCore&) { return nullptr; }
void ScriptCore::appendToOpenProcedure(const UString&) {}
std::shared_ptr<LxBasicSub> ScriptCore::getSubByName(UStringView) const { return nullptr; }
CallResult ScriptCore::callProcedure(LxBasicSub&, std::span<const Variant>, ErrorRef*) {
  return CallResult{};
}

}  // namespace lx
