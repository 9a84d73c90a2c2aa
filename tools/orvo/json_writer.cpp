#include <charconv>
#include <cstdio>
#include <span>
#include <string>
#include <utility>

#include "json_bridge.hpp"
#include "json_scalars.hpp"
#include "orvogeneric/rect_record.hpp"
#include "orvogeneric/types.hpp"

namespace orvo::cli {

namespace {

using json::appendCurrency;
using json::appendDate;
using json::appendNumber;

template <class Integer>
void appendInteger(std::string& out, Integer v) {
  char buf[24];
  const auto r = std::to_chars(buf, buf + sizeof buf, v);
  out.append(buf, r.ptr);
}

}  // namespace

ObjectTable::~ObjectTable() {
  for (auto& [handle, object] : objects_) object->setEventListener({});
}

std::int64_t ObjectTable::add(const std::shared_ptr<Object>& object) {
  const auto it = handles_.find(object.get());
  if (it != handles_.end()) return it->second;
  const std::int64_t handle = next_++;
  objects_[handle] = object;
  handles_[object.get()] = handle;
  object->setEventListener([this, handle](std::string_view event, std::span<Variant> args) {
    std::string line = "{\"event\":";
    appendQuoted(line, std::u16string(event.begin(), event.end()));
    line += ",\"object\":";
    appendInteger(line, handle);
    if (!args.empty()) {
      line += ",\"args\":[";
      for (std::size_t i = 0; i < args.size(); ++i) {
        if (i > 0) line += ',';
        appendJson(line, args[i], *this);
      }
      line += ']';
    }
    line += '}';
    events_.push_back(std::move(line));
  });
  return handle;
}

std::vector<std::string> ObjectTable::takeEvents() { return std::exchange(events_, {}); }

void appendQuoted(std::string& out, std::u16string_view text) {
  // Grown once to its size: a long text grown by doubling would hold two copies at its last
  // step. Surrogates count three bytes each (a pair takes four; a lone one, escaped, six: rare
  // enough to grow for), and one more byte is kept for what closes the answer.
  std::size_t length = 2;
  for (const char16_t c : text) {
    length += c < 0x20 ? 6 : c < 0x80 ? (c == u'"' || c == u'\\' ? 2 : 1) : c < 0x800 ? 2 : 3;
  }
  out.reserve(out.size() + length + 1);
  out += '"';
  static constexpr char kHex[] = "0123456789ABCDEF";
  auto escaped = [&](char16_t c) {
    out += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) out += kHex[(c >> shift) & 0xF];
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (c < 0x80) {
      switch (c) {
        case u'"':
          out += "\\\"";
          break;
        case u'\\':
          out += "\\\\";
          break;
        case u'\n':
          out += "\\n";
          break;
        case u'\r':
          out += "\\r";
          break;
        case u'\t':
          out += "\\t";
          break;
        default:
          if (c < 0x20) {
            escaped(c);
          } else {
            out += static_cast<char>(c);
          }
      }
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
               text[i + 1] <= 0xDFFF) {
      const char32_t cp = 0x10000 + ((static_cast<char32_t>(c) - 0xD800) << 10) +
                          (static_cast<char32_t>(text[i + 1]) - 0xDC00);
      out += static_cast<char>(0xF0 | (cp >> 18));
      out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (cp & 0x3F));
      ++i;
    } else if (c >= 0xD800 && c <= 0xDFFF) {
      escaped(c);
    } else {
      out += static_cast<char>(0xE0 | (c >> 12));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  out += '"';
}

std::string quote(std::u16string_view text) {
  std::string out;
  appendQuoted(out, text);
  return out;
}

void appendJson(std::string& out, const Variant& v, ObjectTable& objects) {
  if (const SafeArray* a = v.array()) {
    if (!a->dimensioned()) {
      out += R"({"lbound":0,"items":null})";
      return;
    }
    if (a->elementType() == VarType::Byte) {
      static constexpr char kHex[] = "0123456789abcdef";
      out += R"({"bytes":")";
      for (const std::uint8_t b : a->bytes()) {
        out += kHex[b >> 4];
        out += kHex[b & 0xF];
      }
      out += R"(","lbound":)";
      appendInteger(out, a->lowerBound());
      out += '}';
      return;
    }
    const bool plain = a->lowerBound() == 0;
    if (!plain) {
      out += R"({"lbound":)";
      appendInteger(out, a->lowerBound());
      out += R"(,"items":)";
    }
    out += '[';
    a->visit([&](const auto& items) {
      using T = typename std::decay_t<decltype(items)>::value_type;
      for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) out += ',';
        if constexpr (std::is_same_v<T, Variant>) {
          appendJson(out, items[i], objects);
        } else if constexpr (std::is_same_v<T, String>) {
          appendQuoted(out, items[i]);
        } else {
          appendJson(out, Variant(items[i]), objects);
        }
      }
    });
    out += ']';
    if (!plain) out += '}';
    return;
  }
  switch (v.type()) {
    case VarType::Empty:
      out += "null";
      return;
    case VarType::Null:
      out += R"({"null":true})";
      return;
    case VarType::Integer:
      appendInteger(out, *v.get<std::int16_t>());
      return;
    case VarType::Long:
      appendInteger(out, *v.get<std::int32_t>());
      return;
    case VarType::Byte:
      appendInteger(out, *v.get<std::uint8_t>());
      return;
    case VarType::Single:
      appendNumber(out, static_cast<double>(*v.get<float>()));
      return;
    case VarType::Double:
      appendNumber(out, *v.get<double>());
      return;
    case VarType::Currency:
      appendCurrency(out, *v.get<Currency>());
      return;
    case VarType::Date:
      appendDate(out, *v.get<Date>());
      return;
    case VarType::String:
      appendQuoted(out, *v.get<String>());
      return;
    case VarType::Boolean: {
      const VBool b = *v.get<VBool>();
      if (b == VBool::True) {
        out += "true";
      } else if (b == VBool::False) {
        out += "false";
      } else {
        appendInteger(out, value(b));  // a non-canonical boolean shows its number
      }
      return;
    }
    case VarType::Error:
      out += R"({"errorValue":)";
      appendInteger(out, v.get<ErrorCode>()->scode);
      out += '}';
      return;
    case VarType::Object: {
      const auto& object = *v.object();
      if (!object) {
        out += R"({"object":null})";
        return;
      }
      // A record is its fields, not a handle: it is a value, and the caller reads it.
      if (const auto* rect = dynamic_cast<const RectRecord*>(object.get())) {
        out += R"({"Left":)";
        appendInteger(out, rect->value.Left);
        out += R"(,"Top":)";
        appendInteger(out, rect->value.Top);
        out += R"(,"Right":)";
        appendInteger(out, rect->value.Right);
        out += R"(,"Bottom":)";
        appendInteger(out, rect->value.Bottom);
        out += '}';
        return;
      }
      out += R"({"object":)";
      appendInteger(out, objects.add(object));
      out += R"(,"class":)";
      appendQuoted(out, fromUtf8(object->className()));
      out += '}';
      return;
    }
    default:
      out += "null";
  }
}

std::string errorJson(const Error& e, const ArgumentFault* fault) {
  std::string out = R"({"error":{"number":)";
  appendInteger(out, e.number());
  out += R"(,"description":)";
  appendQuoted(out, e.description());
  out += R"(,"source":)";
  appendQuoted(out, e.source());
  if (fault != nullptr) {
    out += R"(,"parameter":)";
    appendQuoted(out, fromUtf8(fault->parameter));
    out += R"(,"expected":)";
    appendQuoted(out, fromUtf8(fault->expected));
  }
  return out + "}}";
}

}  // namespace orvo::cli
