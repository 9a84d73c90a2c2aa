#include "json_bridge.hpp"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "orvogeneric/types.hpp"

namespace orvo::cli {

namespace {

[[noreturn]] void badArgument(const std::string& why) {
  throw Error(5, u"Invalid procedure call or argument: " + fromUtf8(why), u"orvo");
}

// 1899-12-30 is serial 0; days from the civil calendar (proleptic Gregorian).
std::int64_t daysFromCivil(std::int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
  const auto yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}
constexpr std::int64_t kSerialEpoch = -25569;  // daysFromCivil(1899, 12, 30)

Date parseDate(const std::string& text) {
  int y = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0;
  const int n = std::sscanf(text.c_str(), "%d-%d-%dT%d:%d:%d", &y, &mo, &d, &h, &mi, &s);
  if ((n != 3 && n != 6) || mo < 1 || mo > 12 || d < 1 || d > 31 || h < 0 || h > 23 || mi < 0 ||
      mi > 59 || s < 0 || s > 59) {
    badArgument("a date is {\"date\": \"YYYY-MM-DDTHH:MM:SS\"}, got \"" + text + "\"");
  }
  const double days = static_cast<double>(
      daysFromCivil(y, static_cast<unsigned>(mo), static_cast<unsigned>(d)) - kSerialEpoch);
  const double time = (h * 3600.0 + mi * 60.0 + s) / 86400.0;
  // The automation date counts the time away from zero for days before the epoch.
  return Date{days < 0 ? days - time : days + time};
}

std::string formatDate(Date date) {
  double whole = std::trunc(date.serial);
  double frac = std::fabs(date.serial - whole);
  auto seconds = static_cast<std::int64_t>(std::llround(frac * 86400.0));
  if (seconds >= 86400) {
    seconds -= 86400;
    whole += date.serial < 0 ? -1 : 1;
  }
  std::int64_t z = static_cast<std::int64_t>(whole) + kSerialEpoch + 719468;
  const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const auto doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const std::int64_t y = static_cast<std::int64_t>(yoe) + era * 400;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  const unsigned d = doy - (153 * mp + 2) / 5 + 1;
  const unsigned m = mp < 10 ? mp + 3 : mp - 9;
  char buf[64];
  std::snprintf(buf, sizeof buf, "%04lld-%02u-%02uT%02lld:%02lld:%02lld",
                static_cast<long long>(y + (m <= 2)), m, d, static_cast<long long>(seconds / 3600),
                static_cast<long long>(seconds / 60 % 60), static_cast<long long>(seconds % 60));
  return buf;
}

std::string number(double v) {
  if (!std::isfinite(v)) return v > 0 ? "1e999" : (v < 0 ? "-1e999" : "null");
  char buf[64];
  const auto r = std::to_chars(buf, buf + sizeof buf, v);
  return std::string(buf, r.ptr);
}

std::string currencyText(Currency c) {
  const bool negative = c.scaled < 0;
  const auto magnitude = negative ? -static_cast<unsigned long long>(c.scaled)
                                  : static_cast<unsigned long long>(c.scaled);
  char buf[64];
  std::snprintf(buf, sizeof buf, "%s%llu.%04llu", negative ? "-" : "", magnitude / 10000,
                magnitude % 10000);
  return buf;
}

Currency parseCurrency(const std::string& text) {
  std::size_t i = 0;
  const bool negative = !text.empty() && text[0] == '-';
  if (negative || (!text.empty() && text[0] == '+')) ++i;
  unsigned long long whole = 0;
  unsigned long long frac = 0;
  int fracDigits = 0;
  bool digits = false;
  for (; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i, digits = true) {
    whole = whole * 10 + static_cast<unsigned>(text[i] - '0');
    if (whole > 922337203685477ULL) badArgument("currency out of range: " + text);
  }
  if (i < text.size() && text[i] == '.') {
    for (++i; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i) {
      if (fracDigits == 4) badArgument("currency has at most four decimals: " + text);
      frac = frac * 10 + static_cast<unsigned>(text[i] - '0');
      ++fracDigits;
      digits = true;
    }
  }
  if (!digits || i != text.size()) badArgument("not a currency amount: " + text);
  while (fracDigits++ < 4) frac *= 10;
  const auto scaled = static_cast<std::int64_t>(whole * 10000 + frac);
  return Currency{negative ? -scaled : scaled};
}

}  // namespace

std::int64_t ObjectTable::add(const std::shared_ptr<Object>& object) {
  for (const auto& [handle, existing] : objects_) {
    if (existing == object) return handle;
  }
  objects_[next_] = object;
  return next_++;
}

std::shared_ptr<Object> ObjectTable::get(std::int64_t handle) const {
  const auto it = objects_.find(handle);
  if (it == objects_.end()) badArgument("no object with handle " + std::to_string(handle));
  return it->second;
}

Variant toVariant(const nlohmann::json& j, const ObjectTable& objects) {
  using nlohmann::json;
  switch (j.type()) {
    case json::value_t::null:
      return Variant{};
    case json::value_t::boolean:
      return Variant(toVBool(j.get<bool>()));
    case json::value_t::string:
      return Variant(fromUtf8(j.get<std::string>()));
    case json::value_t::number_integer:
    case json::value_t::number_unsigned: {
      if (j.is_number_integer() && j.get<std::int64_t>() >= INT32_MIN &&
          j.get<std::int64_t>() <= INT32_MAX) {
        return Variant(static_cast<std::int32_t>(j.get<std::int64_t>()));
      }
      return Variant(j.get<double>());
    }
    case json::value_t::number_float:
      return Variant(j.get<double>());
    case json::value_t::array: {
      std::vector<Variant> items;
      items.reserve(j.size());
      for (const auto& e : j) items.push_back(toVariant(e, objects));
      return Variant::array(std::move(items));
    }
    case json::value_t::object: {
      if (j.contains("date")) return Variant(parseDate(j.at("date").get<std::string>()));
      if (j.contains("currency")) {
        return Variant(parseCurrency(j.at("currency").get<std::string>()));
      }
      if (j.contains("null")) return Variant(Null{});
      if (j.contains("object")) return Variant(objects.get(j.at("object").get<std::int64_t>()));
      const std::int32_t lbound = j.value("lbound", 0);
      if (j.contains("bytes")) {
        const auto hex = j.at("bytes").get<std::string>();
        if (hex.size() % 2 != 0) badArgument("byte array hex text has an odd length");
        std::vector<Variant> items;
        for (std::size_t i = 0; i < hex.size(); i += 2) {
          unsigned value = 0;
          const auto r = std::from_chars(hex.data() + i, hex.data() + i + 2, value, 16);
          if (r.ec != std::errc() || r.ptr != hex.data() + i + 2) {
            badArgument("byte array hex text is not hexadecimal: " + hex);
          }
          items.emplace_back(static_cast<std::uint8_t>(value));
        }
        return Variant::array(std::move(items), lbound, VarType::Byte);
      }
      if (j.contains("items")) {
        if (j.at("items").is_null()) return Variant(SafeArray(VarType::Variant));
        std::vector<Variant> items;
        for (const auto& e : j.at("items")) items.push_back(toVariant(e, objects));
        return Variant::array(std::move(items), lbound);
      }
      badArgument("unknown JSON object form: " + j.dump());
    }
    default:
      badArgument("unsupported JSON value: " + j.dump());
  }
}

std::string quote(std::u16string_view text) {
  std::string out = "\"";
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    const bool lead = c >= 0xD800 && c <= 0xDBFF;
    if (lead && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
      out += toUtf8(text.substr(i, 2));
      ++i;
    } else if (c >= 0xD800 && c <= 0xDFFF) {
      char buf[8];
      std::snprintf(buf, sizeof buf, "\\u%04X", static_cast<unsigned>(c));
      out += buf;
    } else if (c == u'"') {
      out += "\\\"";
    } else if (c == u'\\') {
      out += "\\\\";
    } else if (c == u'\n') {
      out += "\\n";
    } else if (c == u'\r') {
      out += "\\r";
    } else if (c == u'\t') {
      out += "\\t";
    } else if (c < 0x20) {
      char buf[8];
      std::snprintf(buf, sizeof buf, "\\u%04X", static_cast<unsigned>(c));
      out += buf;
    } else {
      out += toUtf8(text.substr(i, 1));
    }
  }
  return out + "\"";
}

std::string toJson(const Variant& v, ObjectTable& objects) {
  if (const SafeArray* a = v.array()) {
    if (!a->dimensioned()) return R"({"lbound":0,"items":null})";
    if (a->elementType() == VarType::Byte) {
      std::string hex;
      for (const auto& item : a->items()) {
        char buf[4];
        std::snprintf(buf, sizeof buf, "%02x", static_cast<unsigned>(*item.get<std::uint8_t>()));
        hex += buf;
      }
      return R"({"bytes":")" + hex + R"(","lbound":)" + std::to_string(a->lowerBound()) + "}";
    }
    std::string items = "[";
    for (std::size_t i = 0; i < a->items().size(); ++i) {
      if (i > 0) items += ",";
      items += toJson(a->items()[i], objects);
    }
    items += "]";
    if (a->lowerBound() == 0) return items;
    return R"({"lbound":)" + std::to_string(a->lowerBound()) + R"(,"items":)" + items + "}";
  }
  switch (v.type()) {
    case VarType::Empty:
      return "null";
    case VarType::Null:
      return R"({"null":true})";
    case VarType::Integer:
      return std::to_string(*v.get<std::int16_t>());
    case VarType::Long:
      return std::to_string(*v.get<std::int32_t>());
    case VarType::Byte:
      return std::to_string(*v.get<std::uint8_t>());
    case VarType::Single:
      return number(static_cast<double>(*v.get<float>()));
    case VarType::Double:
      return number(*v.get<double>());
    case VarType::Currency:
      return R"({"currency":")" + currencyText(*v.get<Currency>()) + "\"}";
    case VarType::Date:
      return R"({"date":")" + formatDate(*v.get<Date>()) + "\"}";
    case VarType::String:
      return quote(*v.get<String>());
    case VarType::Boolean: {
      const VBool b = *v.get<VBool>();
      if (b == VBool::True) return "true";
      if (b == VBool::False) return "false";
      return std::to_string(value(b));  // a non-canonical boolean shows its number
    }
    case VarType::Error:
      return R"({"errorValue":)" + std::to_string(v.get<ErrorCode>()->scode) + "}";
    case VarType::Object: {
      const auto& object = *v.object();
      if (!object) return R"({"object":null})";
      return R"({"object":)" + std::to_string(objects.add(object)) + R"(,"class":")" +
             std::string(object->className()) + "\"}";
    }
    default:
      return "null";
  }
}

std::string errorJson(const Error& e) {
  return R"({"error":{"number":)" + std::to_string(e.number()) + R"(,"description":)" +
         quote(e.description()) + R"(,"source":)" + quote(e.source()) + "}}";
}

}  // namespace orvo::cli
