// The hosts the contract suite runs over: the fake, the headless host on a DXF drawing, and
// the forwarding wrapper around the headless host, each on the same drawing.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/utf.h"
#include "dxf/entity_factory.h"
#include "dxf/record_edit.h"
#include "dxf/sample_drawing.h"
#include "dxf/sort_entities.h"
#include "fakes/fake_host.h"
#include "fakes/forwarding_host.h"
#include "headless/session.h"

namespace host_contract {

using base::Code;
using host::ObjectId;

inline Code codeOf(const base::Status& status) { return status.code(); }
template <typename T>
Code codeOf(const base::Result<T>& result) {
  return result ? Code::kOk : result.status().code();
}

// An answer to a prompt; nothing is an Escape.
using Answer = std::optional<std::wstring>;

// One host under test, with what the cases need beyond the host interface: adding an entity
// as a drawing command would, and running a registered command with scripted answers.
//
// Every host holds the sample drawing's symbols (layer "Walls" frozen, off and locked,
// linetype "Dashed", text style "Notes", dimension style "Arch", block "Door") and the
// variables LUPREC (short 4), MAXSORT (long 1000), INSBASE (the origin), HPSCALE (1.0),
// HPNAME ("ANSI31") and SNAPBASE (a two-dimensional origin).
class Subject {
 public:
  virtual ~Subject() = default;
  virtual host::Host& host() = 0;
  virtual ObjectId addLine() = 0;
  // An entity of host class `entity_class`.
  virtual ObjectId entityOf(const std::wstring& entity_class) = 0;
  // A block `name` whose BLOCK flags (code 70) read `flags`, where the host keeps flags.
  virtual void addBlock(const std::wstring& name, const std::string& flags) = 0;
  // Model-space entities in the order they are drawn, lowest first.
  virtual std::vector<ObjectId> drawOrder() = 0;
  // Runs the command `name`; prompts after the answers run out are cancelled.
  virtual void run(const std::wstring& name, const std::vector<Answer>& answers) = 0;
};

class FakeSubject : public Subject {
 public:
  FakeSubject() {
    host::LayerState walls;
    walls.frozen = walls.off = walls.locked = true;
    fake_.addLayer(L"Walls", walls);
    fake_.fakeDatabase().addSymbol(host::SymbolTable::kLinetype, L"Dashed");
    fake_.fakeDatabase().addSymbol(host::SymbolTable::kTextStyle, L"Notes");
    fake_.fakeDatabase().addSymbol(host::SymbolTable::kDimensionStyle, L"Arch");
    fake_.fakeDatabase().addSymbol(host::SymbolTable::kBlock, L"Door");
    fake_.fakeDatabase().defineVar("LUPREC", host::SysVar{int16_t{4}});
    fake_.fakeDatabase().defineVar("MAXSORT", host::SysVar{int32_t{1000}});
    fake_.fakeDatabase().defineVar("INSBASE", host::SysVar{host::Point3{}});
    fake_.fakeDatabase().defineVar("HPSCALE", host::SysVar{1.0});
    fake_.fakeDatabase().defineVar("HPNAME", host::SysVar{std::wstring(L"ANSI31")});
    fake_.fakeDatabase().defineVar("SNAPBASE", host::SysVar{host::Point2{}});
  }
  host::Host& host() override { return fake_; }
  ObjectId addLine() override { return fake_.addEntity(L"AcDbLine"); }
  ObjectId entityOf(const std::wstring& entity_class) override {
    return fake_.addEntity(entity_class);
  }
  void addBlock(const std::wstring& name, const std::string&) override {
    fake_.fakeDatabase().addSymbol(host::SymbolTable::kBlock, name);
  }
  std::vector<ObjectId> drawOrder() override { return fake_.fakeDatabase().drawOrder(); }
  void run(const std::wstring& name, const std::vector<Answer>& answers) override {
    std::vector<fakes::Answer> script;
    for (const Answer& a : answers)
      script.push_back(a ? fakes::Answer(*a) : fakes::Answer::cancel());
    fake_.answers(script);
    ASSERT_TRUE(fake_.runCommand(name));
  }

 private:
  fakes::FakeHost fake_;
};

// The sample drawing with the layer states and header variables the fake is given.
inline std::string contractDrawing() {
  std::string compact = sample::readCompact("sample_drawing.txt");
  auto replace = [&](const std::string& from, const std::string& to) {
    size_t at = compact.find(from);
    if (at == std::string::npos) throw std::logic_error("sample drawing changed: " + from);
    compact.replace(at, from.size(), to);
  };
  replace("2 Walls\n70 0\n62 1\n", "2 Walls\n70 5\n62 -1\n");  // frozen, locked; off
  replace("3 ANSI_1252\n",
          "3 ANSI_1252\n9 $LUPREC\n70 4\n9 $MAXSORT\n90 1000\n"
          "9 $INSBASE\n10 0.0\n20 0.0\n30 0.0\n");
  return sample::toDxf(compact);
}

class HeadlessSubject : public Subject {
 public:
  explicit HeadlessSubject(bool wrapped)
      : session_(contractDrawing(), wrapped ? wrapper() : testing_session::HostWrapper()) {}
  host::Host& host() override {
    return wrapper_ ? *wrapper_ : static_cast<host::Host&>(*session_.host);
  }
  ObjectId addLine() override {
    auto line = dxf::addLine(session_.drawing, {}, {0, 0, 0}, {1, 1, 0});
    EXPECT_TRUE(line);
    return line ? headless::DxfDatabase::toId(*line) : ObjectId{};
  }
  // The sample holds one entity of each class the property code handles.
  ObjectId entityOf(const std::wstring& entity_class) override {
    host::Database& db = host().database();
    for (ObjectId id : db.modelSpaceEntities()) {
      if (db.entityClass(id) == entity_class) return id;
    }
    ADD_FAILURE() << "the sample drawing has no " << base::toUtf8(entity_class);
    return {};
  }
  void addBlock(const std::wstring& name, const std::string& flags) override {
    auto block = dxf::addBlock(session_.drawing, name, {});
    ASSERT_TRUE(block) << block.status().message();
    dxf::RecordEdit edit(session_.drawing, *block);
    edit.setInSubclass("AcDbBlockBegin", 70, flags);
    edit.commit();
  }
  std::vector<ObjectId> drawOrder() override {
    std::vector<ObjectId> ids;
    for (dxf::RecordId r : dxf::modelSpaceDrawOrder(session_.drawing))
      ids.push_back(headless::DxfDatabase::toId(r));
    return ids;
  }
  void run(const std::wstring& name, const std::vector<Answer>& answers) override {
    std::string script = base::toUtf8(name) + "\n";
    for (const Answer& a : answers) script += a ? base::toUtf8(*a) + "\n" : "\x1b";
    session_.run(script);
  }

 private:
  // Makes the forwarding host and keeps a pointer to it: the session owns it.
  testing_session::HostWrapper wrapper() {
    return [this](headless::HeadlessHost& target) -> std::unique_ptr<host::Host> {
      auto made = std::make_unique<fakes::ForwardingHost>(target);
      wrapper_ = made.get();
      return made;
    };
  }

  host::Host* wrapper_ = nullptr;  // owned by the session; set while it is made
  testing_session::Session session_;
};

struct Implementation {
  const char* name;
  std::function<std::unique_ptr<Subject>()> make;
  // A host without these gives the "not supported" answers of host.h and database.h.
  bool writes_files;
  bool tells_external_references;
};

inline void PrintTo(const Implementation& implementation, std::ostream* os) {
  *os << implementation.name;
}

inline const Implementation kImplementations[] = {
    {"Fake", [] { return std::make_unique<FakeSubject>(); }, false, false},
    {"Headless", [] { return std::make_unique<HeadlessSubject>(false); }, true, true},
    {"ForwardingToHeadless", [] { return std::make_unique<HeadlessSubject>(true); }, true, true},
};

inline std::string implementationName(const testing::TestParamInfo<Implementation>& info) {
  return info.param.name;
}

class HostContractTest : public testing::TestWithParam<Implementation> {
 protected:
  void SetUp() override { subject_ = GetParam().make(); }
  host::Host& host() { return subject_->host(); }
  host::Database& db() { return subject_->host().database(); }
  std::vector<std::wstring> keysOf(ObjectId dict) {
    std::vector<std::wstring> keys;
    auto entries = db().dictionaryEntries(dict);
    for (const auto& entry : *entries) keys.push_back(entry.first);
    return keys;
  }

  std::unique_ptr<Subject> subject_;
};

}  // namespace host_contract
