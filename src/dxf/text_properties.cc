// TEXT and MTEXT properties that span several tags.
#include <cmath>
#include <vector>

#include "dxf/group_code.h"
#include "dxf/number_text.h"
#include "dxf/property_tags.h"

namespace dxf::props {

namespace {

constexpr std::string_view kMtext = "AcDbMText";
constexpr std::string_view kText = "AcDbText";
// DXF holds MTEXT contents in tags of at most this many bytes.
constexpr size_t kChunkBytes = 250;

// The drawing's bytes of `text` cut into chunks of at most kChunkBytes, never inside the
// encoding of one character.
std::vector<std::string> mtextChunks(const Codec& codec, std::wstring_view text) {
  std::vector<std::string> chunks(1);
  for (size_t i = 0; i < text.size();) {
    size_t length = 1;
    if constexpr (sizeof(wchar_t) == 2) {
      if (text[i] >= 0xD800 && text[i] <= 0xDBFF && i + 1 < text.size()) length = 2;
    }
    std::string piece = static_cast<uint32_t>(text[i]) < 0x80
                            ? std::string(1, static_cast<char>(text[i]))
                            : codec.encode(text.substr(i, length));
    if (chunks.back().size() + piece.size() > kChunkBytes) chunks.emplace_back();
    chunks.back() += piece;
    i += length;
  }
  return chunks;
}

double tagReal(const Document& doc, std::span<const Tag> tags, int at, double fallback) {
  double out = fallback;
  return at >= 0 && parseDouble(doc.text(tags[at]), out) ? out : fallback;
}

int64_t tagInt(const Document& doc, std::span<const Tag> tags, int at, int64_t fallback) {
  int64_t out = fallback;
  return at >= 0 && parseInt(doc.text(tags[at]), out) ? out : fallback;
}

// Justifications 0..14 as the horizontal (72) and vertical (73) alignment codes.
struct Alignment {
  int horizontal;
  int vertical;
};
constexpr Alignment kAlignments[] = {
    {0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 0},  // left .. fit: baseline
    {0, 3}, {1, 3}, {2, 3},                          // top
    {0, 2}, {1, 2}, {2, 2},                          // middle
    {0, 1}, {1, 1}, {2, 1},                          // bottom
};

}  // namespace

PropValue getMtextContents(const Document& doc, RecordId /*id*/, std::span<const Tag> tags) {
  TagRange range = subclassGroup(doc, tags, kMtext);
  std::string raw;
  for (size_t i = range.begin; i < range.end; ++i) {
    if (tags[i].code == 3) raw += doc.text(tags[i]);
  }
  int last = findCode(doc, tags, range, 1);
  if (last >= 0) raw += doc.text(tags[last]);
  // Decoded after joining: another writer may have cut a character between chunks.
  return doc.codec().decode(raw);
}

base::Status setMtextContents(Document& doc, RecordId id, const PropValue& value) {
  const std::wstring* text = asText(value);
  if (!text) return wrongValue("text");
  if (base::Status status = checkText(*text); !status) return status;
  std::vector<std::string> chunks = mtextChunks(doc.codec(), *text);

  RecordEdit edit(doc, id);
  TagRange range = subclassGroup(doc, edit.tags(), kMtext);
  size_t insert_at = range.end;
  for (int code : {1, 3, 7, 210, 11, 42, 43, 50}) {
    int at = findCode(doc, edit.tags(), range, code);
    if (at >= 0 && static_cast<size_t>(at) < insert_at) insert_at = static_cast<size_t>(at);
  }
  for (size_t i = range.end; i-- > range.begin;) {
    int code = edit.tags()[i].code;
    if (code == 1 || code == 3) edit.erase(i);
  }
  for (size_t i = 0; i < chunks.size(); ++i) {
    edit.insert(insert_at + i, i + 1 < chunks.size() ? 3 : 1, chunks[i]);
  }
  edit.commit();
  return base::Status::ok();
}

PropValue getMtextRotation(const Document& doc, RecordId /*id*/, std::span<const Tag> tags) {
  TagRange range = subclassGroup(doc, tags, kMtext);
  int x = findCode(doc, tags, range, 11);
  int y = findCode(doc, tags, range, 21);
  // The direction vector wins over the angle when a drawing has both.
  if (x >= 0 && y >= 0) {
    double dx = tagReal(doc, tags, x, 1.0);
    double dy = tagReal(doc, tags, y, 0.0);
    if (dx != 0 || dy != 0) return std::atan2(dy, dx);
  }
  return degreesToRadians(tagReal(doc, tags, findCode(doc, tags, range, 50), 0.0));
}

base::Status setMtextRotation(Document& doc, RecordId id, const PropValue& value) {
  std::optional<double> angle = asReal(value);
  if (!angle || !std::isfinite(*angle)) return wrongValue("a finite angle");
  RecordEdit edit(doc, id);
  auto range = [&] { return subclassGroup(doc, edit.tags(), kMtext); };
  bool changed = putInRange(doc, edit, range(), 50, formatDouble(radiansToDegrees(*angle)));
  if (findCode(doc, edit.tags(), range(), 11) >= 0) {
    changed |= putInRange(doc, edit, range(), 11, formatDouble(std::cos(*angle)));
    changed |= putInRange(doc, edit, range(), 21, formatDouble(std::sin(*angle)));
    changed |= putInRange(doc, edit, range(), 31, formatDouble(0.0));
  }
  if (changed) edit.commit();
  return base::Status::ok();
}

PropValue getTextJustification(const Document& doc, RecordId /*id*/, std::span<const Tag> tags) {
  // 72 is in the first AcDbText group, 73 in the second.
  int64_t horizontal =
      tagInt(doc, tags, findCode(doc, tags, subclassGroup(doc, tags, kText), 72), 0);
  int64_t vertical =
      tagInt(doc, tags, findCode(doc, tags, subclassGroup(doc, tags, kText, 1), 73), 0);
  // Aligned, middle and fit ignore the vertical alignment.
  if (horizontal >= 3 && horizontal <= 5) return horizontal;
  for (int64_t i = 0; i < static_cast<int64_t>(std::size(kAlignments)); ++i) {
    if (kAlignments[i].horizontal == horizontal && kAlignments[i].vertical == vertical) return i;
  }
  return int64_t{0};
}

base::Status setTextJustification(Document& doc, RecordId id, const PropValue& value) {
  std::optional<int64_t> justification = asInt(value);
  if (!justification || *justification < 0 ||
      *justification >= static_cast<int64_t>(std::size(kAlignments))) {
    return wrongValue("a justification 0..14");
  }
  Alignment alignment = kAlignments[*justification];
  RecordEdit edit(doc, id);
  auto first = [&] { return subclassGroup(doc, edit.tags(), kText); };
  bool changed = putInRange(doc, edit, first(), 72, formatInt(alignment.horizontal));
  changed |= putInRange(doc, edit, subclassGroup(doc, edit.tags(), kText, 1), 73,
                        formatInt(alignment.vertical));
  // Any justification but left places the text by its alignment point, which then has to
  // exist: it starts where the text is.
  bool left = alignment.horizontal == 0 && alignment.vertical == 0;
  if (!left && findCode(doc, edit.tags(), first(), 11) < 0) {
    TagRange range = first();
    int extrusion = findCode(doc, edit.tags(), range, 210);
    size_t at = extrusion >= 0 ? static_cast<size_t>(extrusion) : range.end;
    std::vector<Tag> point;
    for (int code : {10, 20, 30}) {
      int source = findCode(doc, edit.tags(), range, code);
      if (source >= 0) point.push_back({static_cast<int16_t>(code + 1), edit.tags()[source].value});
    }
    edit.tags().insert(edit.tags().begin() + static_cast<std::ptrdiff_t>(at), point.begin(),
                       point.end());
    changed |= !point.empty();
  }
  if (changed) edit.commit();
  return base::Status::ok();
}

}  // namespace dxf::props
