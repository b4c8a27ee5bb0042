// The host contract for dictionaries, XRECORDs, reactors, commands and the pick-first set,
// run over every host implementation (see host_subjects.h): the fake, the headless host on a
// DXF drawing and the forwarding wrapper. What only one host does is tested beside it.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "host/host_subjects.h"

namespace {

using host_contract::Answer;
using host_contract::Code;
using host_contract::codeOf;
using host_contract::HostContractTest;
using host_contract::ObjectId;

// Everything the reactors hear, in order, as "appended 12", "erased 12", "ended NAME"...;
// each notice also notes whether its object was valid when told.
struct Log : host::DatabaseReactor, host::EditorReactor {
  explicit Log(host::Database& db) : db(db) {}
  void objectAppended(ObjectId id) override {
    appended.push_back(id);
    events.push_back(L"appended");
    valid_when_told.push_back(db.isValid(id));
    if (auto chain = db.readXrecord(id)) xrecords_when_told.push_back(*chain);
  }
  void objectErased(ObjectId id) override {
    erased.push_back(id);
    events.push_back(L"erased");
    valid_when_told.push_back(db.isValid(id));
  }
  void commandEnded(std::wstring_view name) override {
    events.push_back(L"ended " + std::wstring(name));
  }
  void commandCancelled(std::wstring_view name) override {
    events.push_back(L"cancelled " + std::wstring(name));
  }
  void commandFailed(std::wstring_view name) override {
    events.push_back(L"failed " + std::wstring(name));
  }
  host::Database& db;
  std::vector<ObjectId> appended;
  std::vector<ObjectId> erased;
  std::vector<std::wstring> events;
  std::vector<bool> valid_when_told;
  std::vector<host::ResBufChain> xrecords_when_told;
};

TEST_P(HostContractTest, EveryObjectAppendedIsAnnouncedOnceCompleteUntilTheReactorIsRemoved) {
  Log log(db());
  Log other(db());
  db().addReactor(&log);
  db().addReactor(&other);
  ObjectId line = subject_->addLine();
  ObjectId dict = *db().createDictionary(db().namedObjectsDictionary(), L"Contract");
  ObjectId xrecord = *db().createXrecord(dict, L"Row");
  ObjectId xdict = *db().createExtensionDictionary(line);
  ObjectId in_xdict = *db().createXrecord(xdict, L"Data");
  ObjectId whole = *db().createXrecordWith(xdict, L"Whole", {host::ResBuf::integer(3)});
  ObjectId bare = subject_->addLine();
  ObjectId attached = *db().attachXrecord(bare, L"Row", {host::ResBuf::integer(4)});
  ObjectId bare_xdict = *db().extensionDictionary(bare);
  ASSERT_EQ(*db().dictionaryGet(bare_xdict, L"row"), attached);
  const std::vector<ObjectId> appended = {line,  dict, xrecord,    xdict,   in_xdict,
                                          whole, bare, bare_xdict, attached};
  EXPECT_EQ(log.appended, appended);
  EXPECT_EQ(other.appended, appended);
  EXPECT_EQ(log.valid_when_told, std::vector<bool>(appended.size(), true));
  const std::vector<host::ResBufChain> xrecords = {
      {}, {}, {host::ResBuf::integer(3)}, {host::ResBuf::integer(4)}};
  EXPECT_EQ(log.xrecords_when_told, xrecords);
  EXPECT_TRUE(db().isEntity(line));
  EXPECT_FALSE(db().isEntity(dict));
  EXPECT_EQ(db().modelSpaceEntities().back(), bare);
  EXPECT_EQ(db().entityClass(line), L"AcDbLine");
  EXPECT_EQ(db().entityClass(ObjectId{}), L"");
  std::wstring into = L"AcDbRotatedDimension";
  db().entityClassInto(line, into);
  EXPECT_EQ(into, L"AcDbLine");
  db().entityClassInto(ObjectId{}, into);
  EXPECT_EQ(into, L"");

  db().removeReactor(&log);
  ObjectId later = subject_->addLine();
  ASSERT_TRUE(db().erase(later));
  EXPECT_EQ(log.appended, appended);
  EXPECT_TRUE(log.erased.empty());
  EXPECT_EQ(other.appended.back(), later);
  EXPECT_EQ(other.erased, std::vector<ObjectId>{later});
  db().removeReactor(&other);
}

TEST_P(HostContractTest, EraseAnnouncesEveryObjectOfTheCascadeOwnerFirstOnceAllAreGone) {
  ObjectId root = db().namedObjectsDictionary();
  ObjectId kept = *db().createXrecord(root, L"Kept");
  ObjectId line = subject_->addLine();
  ObjectId xdict = *db().createExtensionDictionary(line);
  ObjectId classes = *db().createDictionary(xdict, L"TAXOR");
  ObjectId row = *db().createXrecord(classes, L"Row");
  ObjectId nested = *db().createDictionary(classes, L"Sub");
  ObjectId deep = *db().createXrecord(nested, L"Deep");
  ObjectId deep_xdict = *db().createExtensionDictionary(deep);
  Log log(db());
  db().addReactor(&log);

  ASSERT_TRUE(db().erase(line));
  const std::vector<ObjectId> owned = {line, xdict, classes, row, nested, deep, deep_xdict};
  for (ObjectId id : owned) EXPECT_FALSE(db().isValid(id)) << id.value;
  ASSERT_EQ(log.erased.size(), owned.size());
  EXPECT_EQ(log.erased.front(), line);
  EXPECT_TRUE(std::is_permutation(log.erased.begin(), log.erased.end(), owned.begin()));
  EXPECT_EQ(log.valid_when_told, std::vector<bool>(owned.size(), false));
  EXPECT_TRUE(log.appended.empty());
  EXPECT_TRUE(db().isValid(kept));
  auto entities = db().modelSpaceEntities();
  EXPECT_EQ(std::find(entities.begin(), entities.end(), line), entities.end());
  EXPECT_EQ(db().entityClass(line), L"");
  std::wstring into = L"AcDbLine";
  db().entityClassInto(line, into);
  EXPECT_EQ(into, L"");

  // An erased entry leaves its dictionary; an erased extension dictionary leaves its object.
  ObjectId child = *db().createDictionary(root, L"Child");
  ASSERT_TRUE(db().erase(child));
  EXPECT_EQ(codeOf(db().dictionaryGet(root, L"Child")), Code::kNotFound);
  EXPECT_EQ(*db().dictionaryGet(root, L"kept"), kept);
  ObjectId other = subject_->addLine();
  ObjectId other_xdict = *db().createExtensionDictionary(other);
  ASSERT_TRUE(db().erase(other_xdict));
  EXPECT_EQ(*db().extensionDictionary(other), ObjectId{});
  EXPECT_TRUE(db().isValid(other));
  // Its entries read, then one more made: both go with it.
  ObjectId third_xdict = *db().createExtensionDictionary(other);
  ObjectId first_row = *db().createXrecord(third_xdict, L"A");
  ASSERT_EQ(db().dictionaryEntries(third_xdict)->size(), 1u);
  ObjectId second_row = *db().createXrecord(third_xdict, L"B");
  ASSERT_TRUE(db().erase(third_xdict));
  EXPECT_FALSE(db().isValid(first_row));
  EXPECT_FALSE(db().isValid(second_row));
  EXPECT_EQ(*db().extensionDictionary(other), ObjectId{});
  db().removeReactor(&log);
}

// A command's end comes once, after the objects it appended, and says how it finished.
TEST_P(HostContractTest, EachCommandEndsOnceAfterItsObjectsAndSaysHowItFinished) {
  struct Case {
    const char* what;
    std::vector<Answer> answers;
    std::vector<std::wstring> events;
  };
  const Case cases[] = {
      {"answered", {L"yes"}, {L"appended", L"ended CONTRACT_ASK"}},
      {"answered no", {L"no"}, {L"ended CONTRACT_ASK"}},
      {"Escape", {std::nullopt}, {L"cancelled CONTRACT_ASK"}},
      {"end of input", {}, {L"cancelled CONTRACT_ASK"}},
      {"cancel posted", {L"cancel"}, {L"appended", L"cancelled CONTRACT_ASK"}},
  };
  int made = 0;
  ASSERT_TRUE(host().commands().addCommand(L"CONTRACT", L"CONTRACT_ASK", 0, [&] {
    host::StringInput answer = host().editor().getString(false, L"Make one? ");
    if (answer.status != host::InputStatus::kNormal || answer.text == L"no") return;
    (void)db().createXrecord(db().namedObjectsDictionary(), L"Made" + std::to_wstring(++made));
    if (answer.text == L"cancel") host().editor().postCancel();
  }));
  for (const Case& c : cases) {
    Log log(db());
    db().addReactor(&log);
    host().editor().addReactor(&log);
    subject_->run(L"_.contract_ask", c.answers);
    host().editor().removeReactor(&log);
    db().removeReactor(&log);
    EXPECT_EQ(log.events, c.events) << c.what;
  }
  // A removed reactor hears nothing more.
  Log removed(db());
  host().editor().addReactor(&removed);
  host().editor().removeReactor(&removed);
  subject_->run(L"CONTRACT_ASK", {L"no"});
  EXPECT_TRUE(removed.events.empty());
}

TEST_P(HostContractTest, CommandNamesAreTakenOnceAndFreedWithTheirGroup) {
  host::CommandStack& commands = host().commands();
  int runs = 0;
  ASSERT_TRUE(commands.addCommand(L"CONTRACT", L"CONTRACT_UNLOAD", 0, [&] {
    ++runs;
    commands.removeGroup(L"CONTRACT");  // a command may remove its own group
  }));
  ASSERT_TRUE(commands.addCommand(L"CONTRACT", L"CONTRACT_STAT", host::kCommandRedraw, [] {}));
  ASSERT_TRUE(commands.addCommand(L"KEEP", L"KEEP_ME", 0, [] {}));
  EXPECT_EQ(codeOf(commands.addCommand(L"OTHER", L"contract_stat", 0, [] {})), Code::kInvalid);
  EXPECT_EQ(commands.commandsOf(L"CONTRACT"),
            (std::vector<std::wstring>{L"CONTRACT_UNLOAD", L"CONTRACT_STAT"}));
  EXPECT_TRUE(commands.commandsOf(L"OTHER").empty());
  Log log(db());
  host().editor().addReactor(&log);
  subject_->run(L"contract_unload", {});
  host().editor().removeReactor(&log);
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(log.events, std::vector<std::wstring>{L"ended CONTRACT_UNLOAD"});
  EXPECT_TRUE(commands.commandsOf(L"CONTRACT").empty());
  EXPECT_EQ(commands.commandsOf(L"KEEP"), std::vector<std::wstring>{L"KEEP_ME"});
  EXPECT_TRUE(commands.addCommand(L"OTHER", L"CONTRACT_STAT", 0, [] {}));  // free again
}

TEST_P(HostContractTest, ImpliedSelectionIsReplacedWholeAndLosesErasedObjects) {
  const std::vector<ObjectId> lines = {subject_->addLine(), subject_->addLine()};
  host::Editor& editor = host().editor();
  EXPECT_TRUE(editor.impliedSelection().empty());
  for (const std::vector<ObjectId>& ids : {lines, std::vector<ObjectId>{lines[1]}, {}}) {
    editor.setImpliedSelection(ids);
    EXPECT_EQ(editor.impliedSelection(), ids);
  }
  editor.setImpliedSelection(lines);
  ASSERT_TRUE(db().erase(lines[0]));
  EXPECT_EQ(editor.impliedSelection(), std::vector<ObjectId>{lines[1]});
}

// Without spaces allowed a blank ends an answer and the rest answers the next prompt; an
// answer longer than kMaxInput UTF-16 units is refused; a point prompt asks again until it
// reads "x,y" or "x,y,z". Each row is one command asking in turn until a prompt is cancelled.
TEST_P(HostContractTest, PromptsReadTheAnswersAsTheCallerAsks) {
  // U+1F600 counts two UTF-16 units: too_long has kMaxInput characters, one unit too many.
  const std::wstring longest = std::wstring(host::Editor::kMaxInput - 2, L'y') + L"\U0001F600";
  const std::wstring too_long = L"x" + longest;
  struct Case {
    const char* asks;  // per prompt: 'w' a word, 's' a text with spaces, 'p' a point
    std::vector<Answer> answers;
    std::vector<std::wstring> got;  // as read; "!cancel", "!error" or "!none" (no point)
  };
  const Case cases[] = {
      {"w", {L""}, {L""}},
      {"ww", {L"two words"}, {L"two", L"words"}},
      {"s", {L"two words"}, {L"two words"}},
      {"s", {L"Potrubí"}, {L"Potrubí"}},
      {"ss", {longest, too_long}, {longest, L"!error"}},
      // The Enter after "d " answers a prompt too; then the answers run out.
      {"wswwww", {L"a b c", L"d ", L"last"}, {L"a", L"b c", L"d", L"", L"last", L"!cancel"}},
      {"ws", {std::nullopt}, {L"!cancel"}},
      {"p", {L"1,2"}, {L"1,2,0"}},
      {"p", {L"1.5,-2,3"}, {L"1.5,-2,3"}},
      {"p", {L""}, {L"!none"}},
      {"pw", {L"x", L"1", L"1,2,3,4", L"1,,2", L"5,6", L"next"}, {L"5,6,0", L"next"}},
      {"p", {L"1,y"}, {L"!cancel"}},
  };
  const Case* current = nullptr;
  std::vector<std::wstring> got;
  ASSERT_TRUE(host().commands().addCommand(L"CONTRACT", L"CONTRACT_PROMPTS", 0, [&] {
    for (const char* ask = current->asks; *ask; ++ask) {
      host::InputStatus status;
      std::wstring text;
      if (*ask == 'p') {
        host::PointInput in = host().editor().getPoint(L"Point: ");
        status = in.status;
        std::wostringstream point;
        point << in.point.x << L"," << in.point.y << L"," << in.point.z;
        text = point.str();
      } else {
        host::StringInput in = host().editor().getString(*ask == 's', L"Text: ");
        status = in.status;
        text = in.text;
      }
      got.push_back(status == host::InputStatus::kNormal   ? text
                    : status == host::InputStatus::kCancel ? L"!cancel"
                    : status == host::InputStatus::kError  ? L"!error"
                                                           : L"!none");
      if (status == host::InputStatus::kCancel) return;
    }
  }));
  for (const Case& c : cases) {
    current = &c;
    got.clear();
    subject_->run(L"CONTRACT_PROMPTS", c.answers);
    EXPECT_EQ(got, c.got) << c.asks << " " << testing::PrintToString(c.answers.front());
  }
}

TEST_P(HostContractTest, DictionariesKeepTheirOrderAndCompareKeysIgnoringCase) {
  ObjectId parent = *db().createDictionary(db().namedObjectsDictionary(), L"Parent");
  ObjectId zeta = *db().createDictionary(parent, L"Zeta");
  ObjectId alpha = *db().createXrecord(parent, L"alpha");
  ObjectId mid = *db().createDictionary(parent, L"Mid");
  EXPECT_EQ(keysOf(parent), (std::vector<std::wstring>{L"Zeta", L"alpha", L"Mid"}));
  std::vector<std::pair<std::wstring, ObjectId>> entries = {{L"stale", ObjectId{}}};
  ASSERT_TRUE(db().dictionaryEntriesInto(parent, entries));
  EXPECT_EQ(entries, (std::vector<std::pair<std::wstring, ObjectId>>{
                         {L"Zeta", zeta}, {L"alpha", alpha}, {L"Mid", mid}}));
  for (auto [key, expected] : {std::pair{L"zeta", zeta}, {L"ALPHA", alpha}, {L"mId", mid}}) {
    auto got = db().dictionaryGet(parent, key);
    ASSERT_TRUE(got) << base::toUtf8(key);
    EXPECT_EQ(*got, expected) << base::toUtf8(key);
  }
  // A key taken in another case is taken.
  EXPECT_EQ(codeOf(db().createXrecord(parent, L"ZETA")), Code::kInvalid);
  EXPECT_EQ(codeOf(db().createDictionary(parent, L"MID")), Code::kInvalid);
  // Removing an entry leaves its object.
  EXPECT_TRUE(db().dictionaryRemove(parent, L"Alpha"));
  EXPECT_EQ(keysOf(parent), (std::vector<std::wstring>{L"Zeta", L"Mid"}));
  EXPECT_TRUE(db().isValid(alpha));
  EXPECT_TRUE(db().readXrecord(alpha));
  EXPECT_EQ(codeOf(db().dictionaryRemove(parent, L"alpha")), Code::kNotFound);
  ObjectId inner = *db().createXrecord(zeta, L"row");
  EXPECT_EQ(*db().dictionaryGet(zeta, L"ROW"), inner);
}

// Every call refuses an object it cannot work on with its own code, and changes nothing.
TEST_P(HostContractTest, FailuresReportTheirCodeAndChangeNothing) {
  ObjectId root = db().namedObjectsDictionary();
  ObjectId parent = *db().createDictionary(root, L"Parent");
  ObjectId line = subject_->addLine();
  ObjectId xrecord = *db().createXrecord(parent, L"Taken");
  ObjectId holder = subject_->addLine();
  ASSERT_TRUE(db().attachXrecord(holder, L"Taken", {}));
  ObjectId gone = subject_->addLine();
  ASSERT_TRUE(db().erase(gone));
  host::ResBufChain chain;
  std::vector<std::pair<std::wstring, ObjectId>> entries;
  struct Case {
    const char* call;
    std::function<Code()> run;
    Code expected;
  };
  host::Database& d = db();
  const Case cases[] = {
      {"dictionaryGet on an XRECORD", [&] { return codeOf(d.dictionaryGet(xrecord, L"a")); },
       Code::kInvalid},
      {"dictionaryGet on erased", [&] { return codeOf(d.dictionaryGet(gone, L"a")); },
       Code::kNotFound},
      {"dictionaryGet on null", [&] { return codeOf(d.dictionaryGet(ObjectId{}, L"a")); },
       Code::kNotFound},
      {"dictionaryEntries on an entity", [&] { return codeOf(d.dictionaryEntries(line)); },
       Code::kInvalid},
      {"dictionaryEntriesInto on erased",
       [&] { return codeOf(d.dictionaryEntriesInto(gone, entries)); }, Code::kNotFound},
      {"dictionaryRemove on an XRECORD", [&] { return codeOf(d.dictionaryRemove(xrecord, L"x")); },
       Code::kInvalid},
      {"createDictionary in an entity", [&] { return codeOf(d.createDictionary(line, L"k")); },
       Code::kInvalid},
      {"createXrecord in an XRECORD", [&] { return codeOf(d.createXrecord(xrecord, L"k")); },
       Code::kInvalid},
      {"createDictionary in erased", [&] { return codeOf(d.createDictionary(gone, L"k")); },
       Code::kNotFound},
      {"attachXrecord on a taken key",
       [&] { return codeOf(d.attachXrecord(holder, L"taken", {})); }, Code::kInvalid},
      {"attachXrecord to erased", [&] { return codeOf(d.attachXrecord(gone, L"k", {})); },
       Code::kNotFound},
      {"readXrecord of a dictionary", [&] { return codeOf(d.readXrecord(parent)); },
       Code::kInvalid},
      {"readXrecordInto of erased", [&] { return codeOf(d.readXrecordInto(gone, chain)); },
       Code::kNotFound},
      {"writeXrecord to a dictionary", [&] { return codeOf(d.writeXrecord(parent, {})); },
       Code::kInvalid},
      {"writeXrecord to an entity", [&] { return codeOf(d.writeXrecord(line, {})); },
       Code::kInvalid},
      {"writeXrecord to erased", [&] { return codeOf(d.writeXrecord(gone, {})); }, Code::kNotFound},
      {"extensionDictionary of erased", [&] { return codeOf(d.extensionDictionary(gone)); },
       Code::kNotFound},
      {"createExtensionDictionary of erased",
       [&] { return codeOf(d.createExtensionDictionary(gone)); }, Code::kNotFound},
      {"releaseExtensionDictionary of erased",
       [&] { return codeOf(d.releaseExtensionDictionary(gone)); }, Code::kNotFound},
      {"erase erased", [&] { return codeOf(d.erase(gone)); }, Code::kNotFound},
      {"erase null", [&] { return codeOf(d.erase(ObjectId{})); }, Code::kNotFound},
      {"erase named objects", [&] { return codeOf(d.erase(root)); }, Code::kInvalid},
      {"setProperty of erased",
       [&] { return codeOf(d.setProperty(gone, host::EntityProperty::kLayer, L"0")); },
       Code::kNotFound},
      {"setRelativeDrawOrder with erased",
       [&] {
         return codeOf(d.setRelativeDrawOrder(std::vector{line, gone}));
       },
       Code::kNotFound},
      {"setRelativeDrawOrder with a dictionary",
       [&] {
         return codeOf(d.setRelativeDrawOrder(std::vector{line, root}));
       },
       Code::kInvalid},
      {"layerState of an absent layer", [&] { return codeOf(d.layerState(L"No such layer")); },
       Code::kNotFound},
      {"getVar unknown", [&] { return codeOf(d.getVar("NOSUCHVARIABLE")); }, Code::kNotFound},
      {"setVar unknown",
       [&] { return codeOf(d.setVar("NOSUCHVARIABLE", host::SysVar{int16_t{2}})); },
       Code::kNotFound},
  };
  const std::vector<ObjectId> drawn = subject_->drawOrder();
  Log log(db());
  db().addReactor(&log);
  for (const Case& c : cases) EXPECT_EQ(c.run(), c.expected) << c.call;
  // Refused, with a code that differs between hosts.
  EXPECT_NE(codeOf(d.setProperty(root, host::EntityProperty::kLayer, L"0")), Code::kOk);
  EXPECT_EQ(subject_->drawOrder(), drawn);
  db().removeReactor(&log);
  EXPECT_TRUE(log.events.empty());
  EXPECT_EQ(keysOf(parent), std::vector<std::wstring>{L"Taken"});
  EXPECT_TRUE(db().readXrecord(xrecord)->empty());
  EXPECT_FALSE(*db().extensionDictionary(line));
  EXPECT_EQ(keysOf(*db().extensionDictionary(holder)), std::vector<std::wstring>{L"Taken"});
  EXPECT_TRUE(db().isValid(root));
}

TEST_P(HostContractTest, XrecordsKeepTheChainAsGiven) {
  ObjectId xrecord = *db().createXrecord(db().namedObjectsDictionary(), L"Row");
  EXPECT_TRUE(db().readXrecord(xrecord)->empty());
  const host::ResBufChain chains[] = {
      {host::ResBuf::text(L"Potrubí"), host::ResBuf::point({1, 2, 3}), host::ResBuf::real(2.5),
       host::ResBuf::integer(-7), host::ResBuf{70, std::string("12")}},
      {host::ResBuf::integer(1)},
      {},
  };
  int made = 0;
  for (const host::ResBufChain& chain : chains) {
    ASSERT_TRUE(db().writeXrecord(xrecord, chain));
    EXPECT_EQ(*db().readXrecord(xrecord), chain);
    host::ResBufChain into = {host::ResBuf::text(L"stale")};
    ASSERT_TRUE(db().readXrecordInto(xrecord, into));
    EXPECT_EQ(into, chain);
    auto whole = db().createXrecordWith(db().namedObjectsDictionary(),
                                        L"Made" + std::to_wstring(++made), chain);
    ASSERT_TRUE(whole);
    EXPECT_EQ(*db().readXrecord(*whole), chain);
  }
  EXPECT_EQ(codeOf(db().createXrecordWith(db().namedObjectsDictionary(), L"made1", {})),
            Code::kInvalid);
}

TEST_P(HostContractTest, ExtensionDictionaryIsMadeOnceAndReleasedOnlyWhenEmpty) {
  ObjectId line = subject_->addLine();
  ObjectId plain = *db().createDictionary(db().namedObjectsDictionary(), L"Plain");
  for (ObjectId owner : {line, plain}) {
    Log log(db());
    db().addReactor(&log);
    EXPECT_EQ(*db().extensionDictionary(owner), ObjectId{});
    EXPECT_EQ(*db().releaseExtensionDictionary(owner), false);  // none to release
    ObjectId xdict = *db().createExtensionDictionary(owner);
    ASSERT_TRUE(xdict);
    EXPECT_NE(xdict, owner);
    EXPECT_EQ(*db().createExtensionDictionary(owner), xdict);
    EXPECT_EQ(*db().extensionDictionary(owner), xdict);
    EXPECT_EQ(log.appended, std::vector<ObjectId>{xdict});

    ObjectId entry = *db().createXrecord(xdict, L"Data");
    EXPECT_EQ(*db().releaseExtensionDictionary(owner), false);
    EXPECT_TRUE(db().isValid(entry));
    ASSERT_TRUE(db().dictionaryRemove(xdict, L"data"));
    EXPECT_EQ(*db().releaseExtensionDictionary(owner), true);
    EXPECT_FALSE(db().isValid(xdict));
    EXPECT_EQ(*db().extensionDictionary(owner), ObjectId{});
    EXPECT_TRUE(db().isValid(owner));
    EXPECT_EQ(log.erased, std::vector<ObjectId>{xdict});
    EXPECT_NE(*db().createExtensionDictionary(owner), xdict);  // a new one
    db().removeReactor(&log);
  }
}

INSTANTIATE_TEST_SUITE_P(AllHosts, HostContractTest,
                         testing::ValuesIn(host_contract::kImplementations),
                         host_contract::implementationName);

// Headless only: its own commands fail on a wrong option and are cancelled at a prompt.
TEST(HeadlessHostCommandsTest, AttsyncSaysHowItFinished) {
  struct Case {
    const char* script;
    std::wstring event;
  };
  const Case cases[] = {
      {"ATTSYNC\nX\n", L"failed ATTSYNC"},
      {"ATTSYNC\nN\nNoSuchBlock\n", L"failed ATTSYNC"},
      {"ATTSYNC\n\x1b", L"cancelled ATTSYNC"},
      {"ATTSYNC\nN\n", L"cancelled ATTSYNC"},
      {"REGEN\n", L"ended REGEN"},
  };
  for (const Case& c : cases) {
    testing_session::Session session(sample::drawing());
    Log log(session.host->database());
    session.host->editor().addReactor(&log);
    session.run(c.script);
    session.host->editor().removeReactor(&log);
    EXPECT_EQ(log.events, std::vector<std::wstring>{c.event}) << c.script;
  }
}

}  // namespace
