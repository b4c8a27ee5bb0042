#include "maintenance/class_template.h"

#include <charconv>
#include <cstdint>

#include "base/text_case.h"
#include "base/utf.h"
#include "catalogue/catalogue.h"
#include "catalogue/class_writer.h"
#include "draw/entity_definition.h"

namespace maintenance {

namespace {

// The topology tables another mapping application keeps in the same dictionary.
constexpr std::wstring_view kTopologyTablePrefixes[] = {L"TPMCNTR_", L"TPMDESC_", L"TPMID_",
                                                        L"TPMLINK_", L"TPMNODE_", L"CNTR_"};

constexpr std::wstring_view kResourceKeywords[] = {
    L"BlockReference", L"BlockReferenceFile", L"Dimension", L"Layer",
    L"Layout",         L"Linetype",           L"MLeader",   L"Mline",
    L"Pattern",        L"Textstyle"};

void replaceAll(std::wstring& text, std::wstring_view from, std::wstring_view to) {
  for (size_t at = text.find(from); at != std::wstring::npos;
       at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

std::wstring_view valueTypeWord(int type) {
  switch (type) {
    case 1:
      return L"Integer";
    case 2:
      return L"Real";
    case 3:
      return L"Character";
    case 4:
      return L"Point";
    default:
      return L"Unknown";
  }
}

bool isTopologyTable(std::wstring_view name) {
  for (std::wstring_view prefix : kTopologyTablePrefixes) {
    if (name.starts_with(prefix)) return true;
  }
  return false;
}

std::wstring_view layerOf(const draw::DrawingProperties& definition) {
  return definition.layer.isSet() ? std::wstring_view(definition.layer.value) : std::wstring_view();
}

// base::toUtf8 of `text` appended to `out`; runs of ASCII, most of a template, are copied as
// they are.
void appendUtf8(std::wstring_view text, std::string& out) {
  auto ascii = [](wchar_t c) { return static_cast<uint32_t>(c) < 0x80; };
  size_t i = 0;
  while (i < text.size()) {
    size_t end = i;
    while (end < text.size() && ascii(text[end])) ++end;
    size_t at = out.size();
    out.resize(at + (end - i));
    for (; i < end; ++i) out[at++] = static_cast<char>(text[i]);
    while (end < text.size() && !ascii(text[end])) ++end;
    if (end > i) out += base::toUtf8(text.substr(i, end - i));
    i = end;
  }
}

}  // namespace

bool isValidNameFormat(std::wstring_view format) {
  bool type = format.find(L"%T") != std::wstring_view::npos ||
              format.find(L"%t") != std::wstring_view::npos;
  return type && format.find(L"%i") != std::wstring_view::npos;
}

std::wstring expandClassName(std::wstring_view format, int number, std::wstring_view layer,
                             std::wstring_view type) {
  std::wstring name(format);
  char digits[16];
  auto written = std::to_chars(digits, digits + sizeof digits, number);
  replaceAll(name, L"%i", std::wstring(digits, written.ptr));
  replaceAll(name, L"%L", layer);
  // Lowered only when asked for: a template names thousands of classes.
  if (name.find(L"%l") != std::wstring::npos) replaceAll(name, L"%l", base::lowerCase(layer));
  replaceAll(name, L"%T", type);
  if (name.find(L"%t") != std::wstring::npos) replaceAll(name, L"%t", base::lowerCase(type));
  return name;
}

std::wstring className(std::wstring_view format, int number, std::wstring_view layer,
                       std::wstring_view type) {
  std::wstring name = expandClassName(format, number, layer, type);
  name.resize(base::utf16Prefix(name, catalogue::kMaxObjectName));
  // A blank at the end of a field would not survive the file.
  while (!name.empty() && name.back() == L' ') name.pop_back();
  return name;
}

TemplateWriter::TemplateWriter(std::wstring name_format, int precision)
    : name_format_(std::move(name_format)), precision_(precision) {}

void TemplateWriter::add(const draw::DrawingProperties& definition) {
  if (definition.object_types.empty()) return;
  const std::wstring& type = definition.object_types.front();
  auto group = groups_.find(type);
  if (group == groups_.end()) group = groups_.emplace(type, Group()).first;
  std::wstring name = className(name_format_, ++group->second.members, layerOf(definition), type);
  chunk_.clear();
  catalogue::appendClassDefinition(name, definition, precision_, chunk_);
  chunk_ += L"\tvel_name\tVEL_NAME\n\t\tvel_key\tVEL_KEY\n\n";
  appendUtf8(chunk_, group->second.text);
  ++classes_;
}

void TemplateWriter::finish(std::wstring_view drawing_path,
                            const std::vector<std::pair<std::wstring, std::wstring>>& variables,
                            const std::vector<StoredTableOutline>& tables, std::string& out) const {
  std::wstring head;
  for (std::wstring_view keyword : kResourceKeywords) {
    if (!head.empty()) head += L'\n';
    head += L'#';
    head += keyword;
    head += L'\t';
    head += drawing_path;
  }
  head += L"\n\n";
  bool any_variable = false;
  for (const auto& [name, value] : variables) {
    if (value.empty()) continue;
    head += L"Variable\t";
    head += name;
    head += L'\t';
    head += value;
    head += L'\n';
    any_variable = true;
  }
  if (any_variable) head += L'\n';

  std::wstring tail;
  for (const StoredTableOutline& table : tables) {
    if (isTopologyTable(table.name)) continue;
    tail += L"\n#vel_name\t";
    tail += table.name;
    tail += L'\n';
    for (const auto& [field, type] : table.fields) {
      tail += L"#\tvel_fld\t";
      tail += field;
      tail += L"\tdescription\t";
      tail += valueTypeWord(type);
      tail += L'\n';
    }
  }

  std::string head_text;
  appendUtf8(head, head_text);
  std::string tail_text;
  appendUtf8(tail, tail_text);
  size_t size = out.size() + head_text.size() + tail_text.size();
  for (const auto& [type, group] : groups_) size += group.text.size() + 2 * type.size() + 32;
  out.reserve(size);
  out += head_text;
  for (const auto& [type, group] : groups_) {
    out += "Class\t";
    appendUtf8(type, out);
    out += "\t1\n\n";
    out += group.text;
    out += "/Class\n\n";
  }
  out += tail_text;
}

}  // namespace maintenance
