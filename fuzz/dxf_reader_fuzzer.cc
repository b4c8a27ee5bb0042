// Feeds arbitrary bytes to the DXF reader. Besides the sanitizers' own checks, every input
// that parses must survive a second trip: the written drawing parses again and is written
// back the same, serialize(parse(serialize(x))) == serialize(x). Then its records are edited
// in each way a record can be kept (a tag inserted, tags set again, an edit edited again)
// and the written drawing must read back to the tags that were set.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "dxf/document.h"

namespace {

// Prints where two writes first differ, then aborts so that libFuzzer keeps the input.
[[noreturn]] void failDiffering(const std::string& first, const std::string& second) {
  size_t at = 0;
  while (at < first.size() && at < second.size() && first[at] == second[at]) ++at;
  std::fprintf(stderr,
               "dxf_reader_fuzzer: second write differs from the first at byte %zu "
               "(sizes %zu and %zu)\n",
               at, first.size(), second.size());
  std::abort();
}

using TagTexts = std::vector<std::pair<int, std::string>>;

// The texts of `tags`, but for the value of $HANDSEED: the writer keeps it above the handles
// given out (an edit gives one to a record whose handle another record holds), as a handle
// (code 5).
TagTexts textsOf(const dxf::Document& doc, auto&& tags) {
  TagTexts out;
  bool seed = false;
  for (const dxf::Tag& tag : tags) {
    out.emplace_back(seed ? 5 : tag.code, seed ? "(seed)" : std::string(doc.text(tag)));
    seed = tag.code == 9 && doc.text(tag) == "$HANDSEED";
  }
  return out;
}

void checkEdits(dxf::Document& doc) {
  std::vector<TagTexts> expected;
  size_t index = 0;
  for (dxf::RecordId id = doc.first(); id != dxf::kNoRecord; id = doc.next(id), ++index) {
    dxf::TagList list = doc.tags(id);
    std::vector<dxf::Tag> tags(list.begin(), list.end());
    // A record sharing an earlier one's handle is given a fresh one when it changes.
    bool rehandled = doc.record(id).rehandle;
    // EOF carries whatever trails the file; a tag after it would be read as part of that.
    if (doc.type(id) != "EOF" && !tags.empty()) {
      if (index % 3 != 1) {
        size_t at = std::min<size_t>(2, tags.size());
        tags.insert(tags.begin() + static_cast<std::ptrdiff_t>(at), doc.makeTag(999, "fuzz"));
      }
      doc.setTags(id, tags);
      if (index % 3 == 2) {
        tags.push_back(doc.makeTag(999, "again"));
        doc.setTags(id, tags);
      }
    }
    TagTexts now = textsOf(doc, doc.scan(id));
    TagTexts set = textsOf(doc, tags);
    if (now != set && !(rehandled && now.size() == set.size())) {
      std::fprintf(stderr, "dxf_reader_fuzzer: record %zu holds other tags than were set\n",
                   index);
      std::abort();
    }
    expected.push_back(std::move(now));
  }
  auto edited = dxf::Document::parse(doc.serialize(), "fuzz-edited");
  if (!edited.isOk()) {
    std::fprintf(stderr, "dxf_reader_fuzzer: the edited drawing does not parse: %s\n",
                 edited.status().message().c_str());
    std::abort();
  }
  index = 0;
  for (dxf::RecordId id = edited->first(); id != dxf::kNoRecord; id = edited->next(id), ++index) {
    if (index >= expected.size() || textsOf(*edited, edited->scan(id)) != expected[index]) {
      std::fprintf(stderr, "dxf_reader_fuzzer: edited record %zu reads back otherwise\n", index);
      std::abort();
    }
  }
  if (index != expected.size()) {
    std::fprintf(stderr, "dxf_reader_fuzzer: the edited drawing has %zu records, not %zu\n",
                 index, expected.size());
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  auto doc = dxf::Document::parse(std::string(reinterpret_cast<const char*>(data), size), "fuzz");
  if (!doc.isOk()) return 0;  // refusing bad input is fine; crashing or leaking is not

  const std::string first = doc->serialize();
  auto again = dxf::Document::parse(first, "fuzz-written");
  if (!again.isOk()) {
    std::fprintf(stderr, "dxf_reader_fuzzer: the written drawing does not parse: %s\n",
                 again.status().message().c_str());
    std::abort();
  }
  const std::string second = again->serialize();
  if (second != first) failDiffering(first, second);
  checkEdits(*again);
  return 0;
}
