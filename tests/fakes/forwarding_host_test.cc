// What the forwarding host itself does: every call reaches the wrapped host once, with its
// arguments and its answer unchanged, and is traced; an override replaces just its call.
// The calls the contract suite makes (host/host_contract_test.cc runs it over the wrapper
// too) fail it when they are not passed on; the others are checked here.
#include "fakes/forwarding_host.h"

#include <gtest/gtest.h>

#include <functional>

#include "base/utf.h"
#include "fakes/fake_host.h"

namespace {

using fakes::FakeHost;
using fakes::ForwardingHost;
using host::EntityProperty;
using host::ObjectId;
using testing::PrintToString;

struct Counter : host::DatabaseReactor, host::EditorReactor {
  void objectAppended(ObjectId) override { ++heard; }
  void commandEnded(std::wstring_view) override { heard += 100; }
  int heard = 0;
};

// Answers as text, for comparing two runs; printed field by field where a struct has padding.
std::string show(const base::Status& status) { return std::to_string(int(status.code())); }
std::string show(const host::SysVar& var) { return PrintToString(var.value); }
std::string show(const host::ResBufChain& chain) {
  std::string out;
  for (const host::ResBuf& b : chain) out += PrintToString(b.code) + PrintToString(b.value);
  return out;
}
template <typename T>
std::string show(const T& value) {
  return PrintToString(value);
}
template <typename T>
std::string show(const base::Result<T>& result) {
  return result ? show(result.value()) : show(result.status());
}

// A fake with something in every part, so that a call that does not reach it shows.
struct Scene {
  Scene() {
    fake.addLayer(L"Walls", {.frozen = false, .off = false, .locked = true});
    fake.setVar("LUPREC", host::SysVar{int16_t{4}});
    fake.setFileName(L"plan.dwg");
    fake.fileAnswers({L"/tmp/out"});
    fake.checkBoxAnswers({std::vector<bool>{true}});
    fake.itemAnswers({std::vector<std::wstring>{L"b"}});
    xrecord = *fake.database().createXrecord(root, L"K");
    (void)fake.database().writeXrecord(xrecord, {host::ResBuf::integer(7)});
    circle = fake.addEntity(L"AcDbCircle");
    line = fake.addEntity(L"AcDbLine", {{EntityProperty::kLayer, L"Walls"}});
    (void)fake.commands().addCommand(L"G", L"OLD", 0, [] {});
    fake.database().addReactor(&reactor);
    fake.editor().addReactor(&reactor);
  }
  // Everything a call can leave behind in the fake, once the reactors are told of one more
  // object and one command.
  std::string state() {
    fake.addEntity(L"AcDbPoint");
    fake.fakeEditor().tellCommandEnded(L"LINE");
    host::Database& db = fake.database();
    return base::toUtf8(fake.transcript()) + PrintToString(fake.queuedStrings()) +
           PrintToString(fake.fakeDialogs().messages().size()) +
           PrintToString(fake.commands().commandsOf(L"G")) +
           PrintToString(fake.fakeCommands().flags(L"NEW")) +
           PrintToString(fake.fakeDatabase().drawOrder()) +
           PrintToString(fake.editor().impliedSelection()) + show(db.readXrecord(xrecord)) +
           PrintToString(db.getProperty(line, EntityProperty::kLayer)) + show(db.getVar("LUPREC")) +
           PrintToString(std::vector<int>{int(fake.fakeDatabase().objectCount()), fake.lockDepth(),
                                          fake.resourceDepth(), fake.fakeEditor().cancelsPosted(),
                                          reactor.heard});
  }

  FakeHost fake;
  Counter reactor;
  ObjectId root = fake.database().namedObjectsDictionary();
  ObjectId xrecord, circle, line;
};

// Each row makes one call through the host interfaces and shows its answer; the row runs
// on a fake directly and through two wrappers, the inner one showing what reached it.
TEST(ForwardingHostTest, CallsOutsideTheContractReachTheWrappedHostOnceUnchangedAndAreTraced) {
  host::Host* h = nullptr;  // what the rows call through
  host::Database* d = nullptr;
  Scene* s = nullptr;
  std::vector<host::CheckBox> boxes;
  using Call = std::function<std::string()>;
  const std::pair<const char*, Call> rows[] = {
      {"Host::pushResourceHandle", [&] { return h->pushResourceHandle(), ""; }},
      {"Host::popResourceHandle", [&] { return h->popResourceHandle(), ""; }},
      {"Host::computerName", [&] { return show(h->computerName()); }},
      {"Host::userName", [&] { return show(h->userName()); }},
      {"Host::getEnv", [&] { return show(h->getEnv(L"ACAD")); }},
      {"Host::setEnv", [&] { return show(h->setEnv(L"A", L"b")); }},
      {"Document::fileName", [&] { return show(h->document().fileName()); }},
      {"Document::sendStringToExecute",
       [&] { return h->document().sendStringToExecute(L"REGEN\n"), ""; }},
      {"Document::lock", [&] { return h->document().lock(), ""; }},
      {"Document::unlock", [&] { return h->document().unlock(), ""; }},
      {"Database::importResources",
       [&] { return show(d->importResources(L"/none.dwg", host::kResourceLayers, {})); }},
      {"Database::addReactor", [&] { return d->addReactor(&s->reactor), ""; }},
      {"Dialogs::openFile", [&] { return show(h->dialogs().openFile(L"Load", {L"txt"}, L"")); }},
      {"Dialogs::saveFile", [&] { return show(h->dialogs().saveFile(L"Save", L"csv")); }},
      {"Dialogs::checkBoxes",
       [&] {
         boxes = {{L"Layer", false}};
         std::string answer = show(h->dialogs().checkBoxes(L"Use", boxes));
         return answer + show(boxes[0].checked);
       }},
      {"Dialogs::chooseItems",
       [&] {
         return show(h->dialogs().chooseItems(L"Pick", {L"a", L"b"}));
       }},
      {"Dialogs::textBox", [&] { return h->dialogs().textBox(L"A", L"b"), ""; }},
      {"Dialogs::messageBox",
       [&] { return h->dialogs().messageBox(L"T", L"Oops", host::MessageKind::kWarning), ""; }},
  };
  for (const auto& [method, call] : rows) {
    SCOPED_TRACE(method);
    Scene direct;
    s = &direct;
    h = &direct.fake;
    d = &h->database();
    const std::string expected = call() + "|" + direct.state();
    Scene wrapped;
    ForwardingHost inner(wrapped.fake, /*trace=*/true);
    ForwardingHost outer(inner, /*trace=*/true);
    s = &wrapped;
    h = &outer;
    d = &h->database();
    EXPECT_EQ(call() + "|" + wrapped.state(), expected);
    EXPECT_EQ(outer.trace(), std::vector<std::string>{method});
    EXPECT_EQ(inner.trace(), std::vector<std::string>{method});
  }
}

// What a test writes to make one host call fail.
class EraseFails : public ForwardingHost {
 public:
  using ForwardingHost::ForwardingHost;
  base::Status erase(ObjectId) override {
    note("Database::erase (failing)");
    return base::Status::io("the drawing is read only");
  }
};

TEST(ForwardingHostTest, AnOverrideReplacesOnlyItsCallAndTheTraceKeepsOrderUntilCleared) {
  FakeHost fake;
  ObjectId line = fake.addEntity(L"AcDbLine");
  ForwardingHost quiet(fake);
  quiet.editor().print(L"x");
  EXPECT_TRUE(quiet.trace().empty());
  EraseFails failing(fake, /*trace=*/true);
  host::Host& h = failing;
  EXPECT_EQ(h.database().erase(line).code(), base::Code::kIo);
  EXPECT_TRUE(fake.database().isValid(line));
  ObjectId x = *h.database().createExtensionDictionary(line);  // others still pass on
  EXPECT_TRUE(fake.database().isValid(x));
  EXPECT_EQ(failing.trace(), (std::vector<std::string>{"Database::erase (failing)",
                                                       "Database::createExtensionDictionary"}));
  failing.clearTrace();
  EXPECT_TRUE(failing.trace().empty());
}

}  // namespace
