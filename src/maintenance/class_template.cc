#include "maintenance/class_template.h"

#include <map>

#include "base/text_case.h"
#include "base/utf.h"
#include "catalogue/catalogue.h"
#include "catalogue/class_writer.h"
#include "draw/entity_definition.h"

namespace maintenance {

namespace {

// Tables other applications keep in the same dictionary.
constexpr std::wstring_view kForeignTablePrefixes[] = {L"TPMCNTR_", L"TPMDESC_", L"TPMID_",
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

bool isForeignTable(std::wstring_view name) {
  for (std::wstring_view prefix : kForeignTablePrefixes) {
    if (name.starts_with(prefix)) return true;
  }
  return false;
}

std::wstring layerOf(const draw::DrawingProperties& definition) {
  return definition.layer.isSet() ? definition.layer.value : std::wstring();
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
  replaceAll(name, L"%i", std::to_wstring(number));
  replaceAll(name, L"%L", layer);
  replaceAll(name, L"%l", base::lowerCase(layer));
  replaceAll(name, L"%T", type);
  replaceAll(name, L"%t", base::lowerCase(type));
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

namespace {

// Equal definitions hash equal: only what operator== compares goes in, with 0 and -0 alike.
size_t hashOf(const draw::DrawingProperties& d) {
  size_t hash = 0;
  auto mix = [&hash](size_t value) { hash = (hash ^ value) * 1099511628211ull; };
  std::hash<std::wstring> text;
  for (const std::wstring& type : d.object_types) mix(text(type));
  for (const draw::ColorSpec& color : d.color) {
    for (int32_t part : color) mix(static_cast<size_t>(part));
  }
  mix(text(d.layer.value));
  mix(text(d.linetype.value));
  mix(std::hash<double>()(d.linetype_scale.value + 0.0));
  mix(static_cast<size_t>(d.lineweight.value));
  mix(text(d.block_name.value));
  mix(text(d.text_style.value));
  mix(std::hash<double>()(d.text_height.value + 0.0));
  return hash;
}

}  // namespace

void DefinitionList::add(draw::DrawingProperties definition) {
  size_t hash = hashOf(definition);
  auto [begin, end] = by_hash_.equal_range(hash);
  for (auto it = begin; it != end; ++it) {
    if (draw::sameDefinition(definitions_[it->second], definition)) return;
  }
  by_hash_.emplace(hash, definitions_.size());
  definitions_.push_back(std::move(definition));
}

std::deque<draw::DrawingProperties> DefinitionList::take() {
  by_hash_.clear();
  return std::move(definitions_);
}

std::wstring composeTemplate(TemplateSource source) {
  std::wstring out;
  for (std::wstring_view keyword : kResourceKeywords) {
    if (!out.empty()) out += L"\n";
    out += L"#";
    out += keyword;
    out += L"\t" + source.drawing_path;
  }
  out += L"\n\n";

  bool any_variable = false;
  for (const auto& [name, value] : source.variables) {
    if (value.empty()) continue;
    out += L"Variable\t" + name + L"\t" + value + L"\n";
    any_variable = true;
  }
  if (any_variable) out += L"\n";

  std::map<std::wstring, std::vector<size_t>> groups;
  for (size_t i = 0; i < source.definitions.size(); ++i) {
    const auto& types = source.definitions[i].object_types;
    if (!types.empty()) groups[types.front()].push_back(i);
  }
  for (const auto& [type, members] : groups) {
    out += L"Class\t" + type + L"\t1\n\n";
    int number = 0;
    for (size_t index : members) {
      catalogue::ObjectClass cls;
      cls.properties = std::move(source.definitions[index]);
      cls.display_name = className(source.name_format, ++number, layerOf(cls.properties), type);
      out += catalogue::writeClassDefinition(cls, nullptr, source.precision);
      out += L"\tvel_name\tVEL_NAME\n\t\tvel_key\tVEL_KEY\n\n";
    }
    out += L"/Class\n\n";
  }

  for (const StoredTableOutline& table : source.tables) {
    if (isForeignTable(table.name)) continue;
    out += L"\n#vel_name\t" + table.name + L"\n";
    for (const auto& [field, type] : table.fields) {
      out += L"#\tvel_fld\t" + field + L"\tdescription\t";
      out += valueTypeWord(type);
      out += L"\n";
    }
  }
  return out;
}

}  // namespace maintenance
