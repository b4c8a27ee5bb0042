// The forwarding host: every call reaches the wrapped host and is traced, and an override
// of one call replaces just that call.
#include "fakes/forwarding_host.h"

#include <gtest/gtest.h>

#include <functional>

#include "fakes/fake_host.h"

namespace {

using fakes::FakeHost;
using fakes::ForwardingHost;
using host::EntityProperty;
using host::InputStatus;
using host::ObjectId;

struct Reactors : host::DatabaseReactor, host::EditorReactor {
  void objectAppended(ObjectId) override { ++appended; }
  void commandEnded(std::wstring_view) override { ++ended; }
  int appended = 0;
  int ended = 0;
};

// Each row calls one method through the wrapper's host interfaces and checks, on the
// wrapped fake, that the call arrived with its arguments and its result came back.
TEST(ForwardingHostTest, EveryCallReachesTheWrappedHostAndIsTraced) {
  struct Row {
    const char* method;
    std::function<void(host::Host& wrapper, FakeHost& fake, ObjectId line)> check;
  };
  const Row rows[] = {
      {"Host::pushResourceHandle",
       [](host::Host& h, FakeHost& f, ObjectId) {
         h.pushResourceHandle();
         EXPECT_EQ(f.resourceDepth(), 1);
       }},
      {"Host::popResourceHandle",
       [](host::Host& h, FakeHost& f, ObjectId) {
         h.popResourceHandle();
         EXPECT_EQ(f.resourceDepth(), -1);
       }},
      {"Document::fileName",
       [](host::Host& h, FakeHost& f, ObjectId) {
         f.setFileName(L"plan.dwg");
         EXPECT_EQ(h.document().fileName(), L"plan.dwg");
       }},
      {"Document::sendStringToExecute",
       [](host::Host& h, FakeHost& f, ObjectId) {
         h.document().sendStringToExecute(L"REGEN\n");
         EXPECT_EQ(f.queuedStrings(), std::vector<std::wstring>{L"REGEN\n"});
       }},
      {"Document::lock",
       [](host::Host& h, FakeHost& f, ObjectId) {
         h.document().lock();
         EXPECT_EQ(f.lockDepth(), 1);
       }},
      {"Document::unlock",
       [](host::Host& h, FakeHost& f, ObjectId) {
         h.document().unlock();
         EXPECT_EQ(f.lockDepth(), -1);
       }},
      {"Database::namedObjectsDictionary",
       [](host::Host& h, FakeHost& f, ObjectId) {
         EXPECT_EQ(h.database().namedObjectsDictionary(), f.database().namedObjectsDictionary());
       }},
      {"Database::dictionaryGet",
       [](host::Host& h, FakeHost& f, ObjectId) {
         ObjectId root = f.database().namedObjectsDictionary();
         ObjectId x = *f.database().createXrecord(root, L"K");
         EXPECT_EQ(*h.database().dictionaryGet(root, L"k"), x);
       }},
      {"Database::dictionaryEntries",
       [](host::Host& h, FakeHost& f, ObjectId) {
         ObjectId root = f.database().namedObjectsDictionary();
         ObjectId x = *f.database().createXrecord(root, L"K");
         EXPECT_EQ(*h.database().dictionaryEntries(root),
                   (std::vector<std::pair<std::wstring, ObjectId>>{{L"K", x}}));
       }},
      {"Database::dictionaryRemove",
       [](host::Host& h, FakeHost& f, ObjectId) {
         ObjectId root = f.database().namedObjectsDictionary();
         (void)f.database().createXrecord(root, L"K");
         EXPECT_TRUE(h.database().dictionaryRemove(root, L"K"));
         EXPECT_FALSE(f.database().dictionaryGet(root, L"K"));
       }},
      {"Database::createDictionary",
       [](host::Host& h, FakeHost& f, ObjectId) {
         ObjectId root = f.database().namedObjectsDictionary();
         ObjectId d = *h.database().createDictionary(root, L"D");
         EXPECT_EQ(*f.database().dictionaryGet(root, L"D"), d);
         EXPECT_TRUE(f.database().dictionaryEntries(d));
       }},
      {"Database::createXrecord",
       [](host::Host& h, FakeHost& f, ObjectId) {
         ObjectId root = f.database().namedObjectsDictionary();
         ObjectId x = *h.database().createXrecord(root, L"X");
         EXPECT_EQ(*f.database().dictionaryGet(root, L"X"), x);
         EXPECT_TRUE(f.database().readXrecord(x));
       }},
      {"Database::readXrecord",
       [](host::Host& h, FakeHost& f, ObjectId) {
         ObjectId x = *f.database().createXrecord(f.database().namedObjectsDictionary(), L"X");
         ASSERT_TRUE(f.database().writeXrecord(x, {host::ResBuf::integer(7)}));
         EXPECT_EQ(*h.database().readXrecord(x), host::ResBufChain{host::ResBuf::integer(7)});
       }},
      {"Database::writeXrecord",
       [](host::Host& h, FakeHost& f, ObjectId) {
         ObjectId x = *f.database().createXrecord(f.database().namedObjectsDictionary(), L"X");
         ASSERT_TRUE(h.database().writeXrecord(x, {host::ResBuf::text(L"a")}));
         EXPECT_EQ(*f.database().readXrecord(x), host::ResBufChain{host::ResBuf::text(L"a")});
       }},
      {"Database::extensionDictionary",
       [](host::Host& h, FakeHost& f, ObjectId line) {
         ObjectId x = *f.database().createExtensionDictionary(line);
         EXPECT_EQ(*h.database().extensionDictionary(line), x);
       }},
      {"Database::createExtensionDictionary",
       [](host::Host& h, FakeHost& f, ObjectId line) {
         ObjectId x = *h.database().createExtensionDictionary(line);
         EXPECT_EQ(*f.database().extensionDictionary(line), x);
       }},
      {"Database::releaseExtensionDictionary",
       [](host::Host& h, FakeHost& f, ObjectId line) {
         (void)f.database().createExtensionDictionary(line);
         EXPECT_TRUE(*h.database().releaseExtensionDictionary(line));
         EXPECT_FALSE(*f.database().extensionDictionary(line));
       }},
      {"Database::erase",
       [](host::Host& h, FakeHost& f, ObjectId line) {
         EXPECT_TRUE(h.database().erase(line));
         EXPECT_FALSE(f.database().isValid(line));
       }},
      {"Database::isValid",
       [](host::Host& h, FakeHost& f, ObjectId line) {
         ASSERT_TRUE(f.database().erase(line));
         EXPECT_FALSE(h.database().isValid(line));
       }},
      {"Database::entityClass",
       [](host::Host& h, FakeHost&, ObjectId line) {
         EXPECT_EQ(h.database().entityClass(line), L"AcDbLine");
       }},
      {"Database::modelSpaceEntities",
       [](host::Host& h, FakeHost&, ObjectId line) {
         EXPECT_EQ(h.database().modelSpaceEntities(), std::vector<ObjectId>{line});
       }},
      {"Database::getProperty",
       [](host::Host& h, FakeHost&, ObjectId line) {
         EXPECT_EQ(h.database().getProperty(line, EntityProperty::kLayer),
                   host::PropertyValue(L"Walls"));
       }},
      {"Database::setProperty",
       [](host::Host& h, FakeHost& f, ObjectId line) {
         EXPECT_TRUE(h.database().setProperty(line, EntityProperty::kLayer, L"0"));
         EXPECT_EQ(f.database().getProperty(line, EntityProperty::kLayer),
                   host::PropertyValue(L"0"));
       }},
      {"Database::setRelativeDrawOrder",
       [](host::Host& h, FakeHost& f, ObjectId line) {
         ObjectId circle = f.addEntity(L"AcDbCircle");
         EXPECT_TRUE(h.database().setRelativeDrawOrder({circle, line}));
         EXPECT_EQ(f.fakeDatabase().drawOrder(), (std::vector<ObjectId>{circle, line}));
       }},
      {"Database::hasSymbol",
       [](host::Host& h, FakeHost&, ObjectId) {
         EXPECT_TRUE(h.database().hasSymbol(host::SymbolTable::kLayer, L"walls"));
       }},
      {"Database::layerState",
       [](host::Host& h, FakeHost&, ObjectId) {
         EXPECT_TRUE(h.database().layerState(L"Walls")->locked);
       }},
      {"Database::getVar",
       [](host::Host& h, FakeHost&, ObjectId) {
         EXPECT_EQ(*h.database().getVar("LUPREC"), host::SysVar{int16_t{4}});
       }},
      {"Database::setVar",
       [](host::Host& h, FakeHost& f, ObjectId) {
         EXPECT_TRUE(h.database().setVar("LUPREC", host::SysVar{int16_t{2}}));
         EXPECT_EQ(*f.database().getVar("LUPREC"), host::SysVar{int16_t{2}});
       }},
      {"Database::addReactor",
       [](host::Host& h, FakeHost& f, ObjectId) {
         Reactors reactor;
         h.database().addReactor(&reactor);
         f.addEntity(L"AcDbLine");
         EXPECT_EQ(reactor.appended, 1);
         f.database().removeReactor(&reactor);
       }},
      {"Database::removeReactor",
       [](host::Host& h, FakeHost& f, ObjectId) {
         Reactors reactor;
         f.database().addReactor(&reactor);
         h.database().removeReactor(&reactor);
         f.addEntity(L"AcDbLine");
         EXPECT_EQ(reactor.appended, 0);
       }},
      {"Editor::getString",
       [](host::Host& h, FakeHost& f, ObjectId) {
         f.answers({L"two words"});
         EXPECT_EQ(h.editor().getString(true, L"Name: ").text, L"two words");
         EXPECT_EQ(f.transcript(), L"Name: two words\n");
       }},
      {"Editor::getPoint",
       [](host::Host& h, FakeHost& f, ObjectId) {
         f.answers({L"1,2"});
         EXPECT_EQ(h.editor().getPoint(L"Point: ").point, (host::Point3{1, 2, 0}));
       }},
      {"Editor::print",
       [](host::Host& h, FakeHost& f, ObjectId) {
         h.editor().print(L"Hi\n");
         EXPECT_EQ(f.transcript(), L"Hi\n");
       }},
      {"Editor::impliedSelection",
       [](host::Host& h, FakeHost& f, ObjectId line) {
         f.editor().setImpliedSelection({line});
         EXPECT_EQ(h.editor().impliedSelection(), std::vector<ObjectId>{line});
       }},
      {"Editor::select",
       [](host::Host& h, FakeHost& f, ObjectId line) {
         f.selections({{line}});
         EXPECT_EQ(h.editor().select().ids, std::vector<ObjectId>{line});
       }},
      {"Editor::setImpliedSelection",
       [](host::Host& h, FakeHost& f, ObjectId line) {
         h.editor().setImpliedSelection({line});
         EXPECT_EQ(f.editor().impliedSelection(), std::vector<ObjectId>{line});
       }},
      {"Editor::addReactor",
       [](host::Host& h, FakeHost& f, ObjectId) {
         Reactors reactor;
         h.editor().addReactor(&reactor);
         f.fakeEditor().tellCommandEnded(L"LINE");
         EXPECT_EQ(reactor.ended, 1);
         f.editor().removeReactor(&reactor);
       }},
      {"Editor::removeReactor",
       [](host::Host& h, FakeHost& f, ObjectId) {
         Reactors reactor;
         f.editor().addReactor(&reactor);
         h.editor().removeReactor(&reactor);
         f.fakeEditor().tellCommandEnded(L"LINE");
         EXPECT_EQ(reactor.ended, 0);
       }},
      {"Editor::postCancel",
       [](host::Host& h, FakeHost& f, ObjectId) {
         h.editor().postCancel();
         EXPECT_EQ(f.fakeEditor().cancelsPosted(), 1);
       }},
      {"Dialogs::openFile",
       [](host::Host& h, FakeHost& f, ObjectId) {
         f.fileAnswers({L"/tmp/in.txt"});
         EXPECT_EQ(h.dialogs().openFile(L"Load", {L"txt"}, L""), L"/tmp/in.txt");
       }},
      {"Dialogs::saveFile",
       [](host::Host& h, FakeHost& f, ObjectId) {
         f.fileAnswers({L"/tmp/out"});
         EXPECT_EQ(h.dialogs().saveFile(L"Save", L"csv"), L"/tmp/out.csv");
       }},
      {"Dialogs::checkBoxes",
       [](host::Host& h, FakeHost& f, ObjectId) {
         f.checkBoxAnswers({std::vector<bool>{true}});
         std::vector<host::CheckBox> boxes = {{L"Layer", false}};
         EXPECT_TRUE(h.dialogs().checkBoxes(L"Use", boxes));
         EXPECT_TRUE(boxes[0].checked);
       }},
      {"Dialogs::chooseItems",
       [](host::Host& h, FakeHost& f, ObjectId) {
         f.itemAnswers({std::vector<std::wstring>{L"b"}});
         EXPECT_EQ(h.dialogs().chooseItems(L"Pick", {L"a", L"b"}),
                   std::vector<std::wstring>{L"b"});
       }},
      {"Dialogs::textBox",
       [](host::Host& h, FakeHost& f, ObjectId) {
         h.dialogs().textBox(L"About", L"text");
         EXPECT_EQ(f.transcript(), L"About\ntext\n");
       }},
      {"Dialogs::messageBox",
       [](host::Host& h, FakeHost& f, ObjectId) {
         h.dialogs().messageBox(L"TAXOR", L"Oops", host::MessageKind::kWarning);
         EXPECT_EQ(f.fakeDialogs().messages(),
                   (std::vector<fakes::Message>{{L"TAXOR", L"Oops", host::MessageKind::kWarning}}));
       }},
      {"CommandStack::addCommand",
       [](host::Host& h, FakeHost& f, ObjectId) {
         int runs = 0;
         EXPECT_TRUE(h.commands().addCommand(L"G", L"CMD", 4, [&] { ++runs; }));
         EXPECT_TRUE(f.runCommand(L"CMD"));
         EXPECT_EQ(runs, 1);
         EXPECT_EQ(f.fakeCommands().flags(L"CMD"), 4);
       }},
      {"CommandStack::removeGroup",
       [](host::Host& h, FakeHost& f, ObjectId) {
         ASSERT_TRUE(f.commands().addCommand(L"G", L"CMD", 0, [] {}));
         h.commands().removeGroup(L"G");
         EXPECT_TRUE(f.commands().commandsOf(L"G").empty());
       }},
      {"CommandStack::commandsOf",
       [](host::Host& h, FakeHost& f, ObjectId) {
         ASSERT_TRUE(f.commands().addCommand(L"G", L"CMD", 0, [] {}));
         EXPECT_EQ(h.commands().commandsOf(L"G"), std::vector<std::wstring>{L"CMD"});
       }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.method);
    FakeHost fake;
    host::LayerState locked;
    locked.locked = true;
    fake.addLayer(L"Walls", locked);
    fake.setVar("LUPREC", host::SysVar{int16_t{4}});
    ObjectId line = fake.addEntity(L"AcDbLine", {{EntityProperty::kLayer, L"Walls"}});
    ForwardingHost wrapper(fake, /*trace=*/true);
    row.check(wrapper, fake, line);
    EXPECT_EQ(wrapper.trace(), std::vector<std::string>{row.method});
  }
}

TEST(ForwardingHostTest, PartsAreTheWrapperSoEveryCallCanBeOverridden) {
  FakeHost fake;
  ForwardingHost wrapper(fake);
  host::Host& as_host = wrapper;
  EXPECT_EQ(&as_host.document(), static_cast<host::Document*>(&wrapper));
  EXPECT_EQ(&as_host.database(), static_cast<host::Database*>(&wrapper));
  EXPECT_EQ(&as_host.editor(), static_cast<host::Editor*>(&wrapper));
  EXPECT_EQ(&as_host.dialogs(), static_cast<host::Dialogs*>(&wrapper));
  EXPECT_EQ(&as_host.commands(), static_cast<host::CommandStack*>(&wrapper));
  EXPECT_EQ(&wrapper.target(), static_cast<host::Host*>(&fake));
  // Without tracing nothing is recorded.
  as_host.editor().print(L"x");
  EXPECT_TRUE(wrapper.trace().empty());
}

TEST(ForwardingHostTest, TraceListsCallsInOrderUntilCleared) {
  FakeHost fake;
  ObjectId line = fake.addEntity(L"AcDbLine");
  ForwardingHost wrapper(fake, /*trace=*/true);
  host::Host& h = wrapper;
  (void)h.database().getProperty(line, EntityProperty::kColor);
  h.editor().print(L"x");
  (void)h.database().isValid(line);
  EXPECT_EQ(wrapper.trace(), (std::vector<std::string>{"Database::getProperty", "Editor::print",
                                                       "Database::isValid"}));
  wrapper.clearTrace();
  EXPECT_TRUE(wrapper.trace().empty());
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

class CancelsEveryPrompt : public ForwardingHost {
 public:
  using ForwardingHost::ForwardingHost;
  host::StringInput getString(bool, std::wstring_view) override { return {}; }
};

TEST(ForwardingHostTest, AnOverrideReplacesOnlyItsCall) {
  FakeHost fake;
  ObjectId line = fake.addEntity(L"AcDbLine");
  EraseFails failing(fake, /*trace=*/true);
  host::Host& h = failing;
  base::Status erased = h.database().erase(line);
  EXPECT_EQ(erased.code(), base::Code::kIo);
  EXPECT_TRUE(fake.database().isValid(line));
  ObjectId x = *h.database().createExtensionDictionary(line);  // others still pass on
  EXPECT_TRUE(fake.database().isValid(x));
  EXPECT_EQ(failing.trace(), (std::vector<std::string>{"Database::erase (failing)",
                                                       "Database::createExtensionDictionary"}));

  FakeHost scripted;
  scripted.answers({L"1"});
  CancelsEveryPrompt cancelling(scripted);
  host::Host& c = cancelling;
  EXPECT_EQ(c.editor().getString(false, L"Mode: ").status, InputStatus::kCancel);
  EXPECT_EQ(scripted.fakeEditor().answersLeft(), 1u);
  // getPoint still reaches the fake: "1" is no point, and then the script has run out.
  EXPECT_EQ(c.editor().getPoint(L"Point: ").status, InputStatus::kCancel);
  EXPECT_EQ(scripted.fakeEditor().answersLeft(), 0u);
}

}  // namespace
