#include "value_text.h"

#include <charconv>
#include <limits>
#include <utility>

#include "catalogue/in_quotes.h"
#include "interface_ids.h"
#include "message_fields.h"
#include "report/hex.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

void appendMask(ValueForm form, const AddressBytes& mask, std::string* out) {
  const std::size_t size = sizeOf(form);
  const unsigned length = leadingOnes(mask, size);
  if (length == 8 * size) return;
  *out += '/';
  if (length == bitsToLastOne(mask, size) && form != ValueForm::kMac) {
    appendNumber(length, out);
  } else {
    appendAddress(form, mask, out);
  }
}

template <class Append>
void appendList(const NumberList& numbers, std::string* out, Append append) {
  bool isFirst = true;
  for (const std::uint32_t number : numbers) {
    if (!std::exchange(isFirst, false)) *out += ',';
    append(number);
  }
}

void appendLimids(const FormRow& row, const AnyMessage& message, std::string* out) {
  *out += '[';
  appendList(numbersIn(message, row.fields[0]), out,
             [&](std::uint32_t limid) { appendLimid(limid, out); });
  *out += ']';
  if (!row.fields[1] || numbersIn(message, row.fields[1]).empty()) return;
  *out += '!';
  appendList(numbersIn(message, row.fields[1]), out,
             [&](std::uint32_t type) { appendName(row.names, type, out); });
}

// Parses one value. The pieces of the text are views of it, so that the position of a fault can be
// computed.
class ValueReader {
 public:
  ValueReader(const FormRow& row, std::string_view text, AnyMessage* message)
      : row_(row), text_(text), message_(message) {}

  std::optional<ValueFault> read() {
    readForm();
    return std::move(fault_);
  }
 private:
  void fail(std::string_view piece, std::string why) {
    if (!fault_) fault_ = {std::move(why), piece};
  }

  // The value of a number or name. If the text is neither, the result is 0, and a fault is
  // reported.
  std::uint32_t number(std::string_view piece) {
    const auto value = parseNumber(piece, row_.bits);
    if (!value) fail(piece, noNumber(piece, row_.bits));
    return value.value_or(0);
  }
  std::uint32_t port(std::string_view piece) {
    const auto value = row_.names.fromName(piece);
    return value ? *value : number(piece);
  }
  std::uint32_t named(std::string_view piece, unsigned bits) {
    const auto value = parseName(row_.names, piece, bits);
    if (!value) fail(piece, noName("value", row_.names, piece, bits));
    return value.value_or(0);
  }

  // Calls `use` for each piece between commas. An empty text has no pieces.
  template <class Use>
  void each(std::string_view list, Use use) {
    for (std::size_t comma = 0; !list.empty() && !fault_; list.remove_prefix(comma + 1)) {
      comma = list.find(',');
      use(list.substr(0, comma));
      if (comma == list.npos) return;
      if (comma + 1 == list.size()) {
        return fail(list.substr(comma), "a value is missing behind the comma");
      }
    }
  }

  // Reads both parts of a value, which a character such as '/' separates.
  template <class Use>
  void pair(char sign, Use use) {
    const std::size_t at = text_.find(sign);
    if (at == text_.npos) return fail(text_.substr(text_.size()), "write " + describe(row_));
    setNumber(message_, row_.fields[0], use(text_.substr(0, at)));
    setNumber(message_, row_.fields[1], use(text_.substr(at + 1)));
  }

  // A decimal number after the slash might be meant as the length of a mask.
  void readPort() {
    const std::size_t slash = std::min(text_.find('/'), text_.size());
    const std::string_view word = text_.substr(0, slash), mask = text_.substr(slash);
    if (word.find('-') != word.npos) {
      return fail(word, inQuotes(word) + " is a range, which only " +
                            std::string(nameOf(FiltersCommon::FILTERS_MATCH_DST_L4_PORT_RANGE)) +
                            " takes");
    }
    setNumber(message_, row_.fields[0], port(word));
    if (!mask.empty() && (mask.size() < 3 || mask.substr(1, 2) != "0x")) {
      return fail(mask, "write " + std::string(word) +
                            " for the port alone, or a mask in hexadecimal as in " +
                            std::string(word) + "/0xff00");
    }
    setNumber(message_, row_.fields[1], mask.empty() ? 0xffff : number(mask.substr(1)));
  }

  void readAddress() {
    const std::size_t slash = text_.find('/');
    const std::string_view text = text_.substr(0, slash);
    const auto bytes = parseAddress(row_.form, text);
    if (!bytes) return fail(text, inQuotes(text) + " is not " + describe(row_));
    setAddress(message_, row_.fields[0], row_.form, *bytes);
    if (!row_.fields[1]) {
      if (slash != text_.npos) fail(text_.substr(slash), "this address takes no mask");
      return;
    }
    const auto mask = slash == text_.npos ? std::optional(prefixMask(row_.bits))
                                          : readMask(text_.substr(slash + 1));
    if (mask) setAddress(message_, row_.fields[1], row_.form, *mask);
  }

  std::optional<AddressBytes> readMask(std::string_view text) {
    if (auto mask = parseAddress(row_.form, text)) return mask;
    const auto length = row_.form == ValueForm::kMac ? std::nullopt : parseNumber(text, 8);
    if (length && *length <= row_.bits) return prefixMask(*length);
    fail(text, inQuotes(text) + " is no mask: write " +
                   (row_.form == ValueForm::kMac
                        ? "an address, as in /ff:ff:ff:00:00:00"
                        : "a length from 0 to " + std::to_string(row_.bits) + ", or an address"));
    return std::nullopt;
  }

  void readLimids() {
    const std::size_t end = text_.find(']');
    if (text_.empty() || text_[0] != '[' || end == text_.npos) {
      return fail(text_, inQuotes(text_) + " is no list: write " + describe(row_));
    }
    each(text_.substr(1, end - 1),
         [&](std::string_view piece) { addNumber(message_, row_.fields[0], number(piece)); });
    const std::string_view rest = text_.substr(end + 1);
    if (rest.empty()) return;
    if (rest.size() == 1 || rest[0] != '!' || !row_.fields[1]) {
      return fail(rest, !row_.fields[1]
                            ? "nothing may follow the list"
                            : "only kinds of port to leave out may follow the list, as in !cpu");
    }
    each(rest.substr(1),
         [&](std::string_view piece) { addNumber(message_, row_.fields[1], named(piece, 32)); });
  }

  void readNumbers() {
    if (text_.size() < 2 || text_.front() != '{' || text_.back() != '}') {
      return fail(text_, inQuotes(text_) + " is no set: write " + describe(row_));
    }
    each(text_.substr(1, text_.size() - 2),
         [&](std::string_view piece) { addNumber(message_, row_.fields[0], number(piece)); });
  }

  void readForm() {
    const auto asNumber = [this](std::string_view piece) { return number(piece); };
    const auto asLimid = [&](std::string_view piece) { return limidToField(row_, number(piece)); };
    switch (row_.form) {
      case ValueForm::kFlag:
        return;
      case ValueForm::kNumber:
      case ValueForm::kHexadecimal:
      case ValueForm::kLimid:
        return setNumber(message_, row_.fields[0],
                         row_.names.all == nullptr ? number(text_) : named(text_, row_.bits));
      case ValueForm::kName:
        return setNumber(message_, row_.fields[0], named(text_, 32));
      case ValueForm::kBoolean:
        if (text_ != "true" && text_ != "false") {
          return fail(text_, inQuotes(text_) + " is not " + describe(row_));
        }
        return setNumber(message_, row_.fields[0], text_ == "true" ? 1 : 0);
      case ValueForm::kMac:
      case ValueForm::kIPv4:
      case ValueForm::kIPv6:
        return readAddress();
      case ValueForm::kPortMask:
        return readPort();
      case ValueForm::kVlanInfo:
        return pair('/', asNumber);
      case ValueForm::kPortRange:
        return pair('-', [this](std::string_view piece) { return port(piece); });
      case ValueForm::kMplsPorts:
        return pair('/', asLimid);
      case ValueForm::kNumbers:
        return readNumbers();
      case ValueForm::kLimids:
        return readLimids();
    }
  }

  const FormRow& row_;
  std::string_view text_;
  AnyMessage* message_;
  std::optional<ValueFault> fault_;
};

template <class Code, class PB>
std::string textOfCode(const PB& message) {
  const auto code = static_cast<Code>(message.type_());
  std::string text;
  appendName(kNamesOf<Code>, code, &text);
  if (const FormRow* row = formOf(code)) appendValue(*row, message, &text);
  return text;
}

}  // namespace

std::string textOf(const MatchPB& match) { return textOfCode<filtersMatch_t>(match); }
std::string textOf(const ActionPB& action) { return textOfCode<filtersAction_t>(action); }

std::string textOf(const CounterPB& counter) {
  std::string text;
  appendCounter(counter, &text);
  return text;
}

void appendCounter(const CounterPB& counter, std::string* out) {
  appendDecimal(counter.id(), out);
  *out += '=';
  const std::string_view name = nameOf(static_cast<counter_type_t>(counter.type()));
  if (name.empty()) return appendDecimal(counter.type(), out);
  *out += name;
}

void appendValue(const FormRow& row, const AnyMessage& message, std::string* out) {
  if (row.form == ValueForm::kFlag) return;
  *out += '=';
  const auto number = [&](int which) { return numberIn(message, row.fields[which]); };
  switch (row.form) {
    case ValueForm::kFlag:
      return;
    case ValueForm::kNumber:
      return appendNumber(number(0), out);
    case ValueForm::kHexadecimal:
      return appendHexNumber(number(0), row.bits / 4, out);
    case ValueForm::kName:
      return appendName(row.names, number(0), out);
    case ValueForm::kBoolean:
      *out += number(0) != 0 ? "true" : "false";
      return;
    case ValueForm::kMac:
    case ValueForm::kIPv4:
    case ValueForm::kIPv6:
      appendAddress(row.form, addressIn(message, row.fields[0], row.form), out);
      if (!row.fields[1]) return;
      return appendMask(row.form, addressIn(message, row.fields[1], row.form), out);
    case ValueForm::kPortMask:
      appendNumber(number(0), out);
      *out += '/';
      return appendHexNumber(number(1), 1, out);
    case ValueForm::kPortRange:
    case ValueForm::kVlanInfo:
      appendNumber(number(0), out);
      *out += row.form == ValueForm::kPortRange ? '-' : '/';
      return appendNumber(number(1), out);
    case ValueForm::kNumbers:
      *out += '{';
      appendList(numbersIn(message, row.fields[0]), out,
                 [&](std::uint32_t n) { appendNumber(n, out); });
      *out += '}';
      return;
    case ValueForm::kLimid:
      return appendLimid(number(0), out);
    case ValueForm::kLimids:
      return appendLimids(row, message, out);
    case ValueForm::kMplsPorts:
      appendLimid(limidFromField(row, number(0)), out);
      *out += '/';
      return appendLimid(limidFromField(row, number(1)), out);
  }
}

std::string valueText(const FormRow& row, const AnyMessage& message) {
  std::string text;
  appendValue(row, message, &text);
  return text.empty() ? text : text.substr(1);
}

std::optional<ValueFault> readValue(const FormRow& row, std::string_view text,
                                    AnyMessage* message) {
  return ValueReader(row, text, message).read();
}

std::string describe(const FormRow& row) {
  switch (row.form) {
    case ValueForm::kFlag:
      return "no value";
    case ValueForm::kNumber:
    case ValueForm::kHexadecimal:
      return "a number from 0 to " + std::to_string(mostOf(row.bits)) +
             (row.names.all == nullptr ? "" : " or a name");
    case ValueForm::kName:
      return "a name or a number";
    case ValueForm::kBoolean:
      return "true or false";
    case ValueForm::kMac:
      return "a MAC address, as in 00:1b:21:0a:ff:42";
    case ValueForm::kIPv4:
      return "an IPv4 address, as in 192.0.2.1";
    case ValueForm::kIPv6:
      return "an IPv6 address, as in 2001:db8::1";
    case ValueForm::kPortMask:
      return "a port, as in 179";
    case ValueForm::kPortRange:
      return "the first and the last port, as in 1000-2000";
    case ValueForm::kNumbers:
      return "a set in braces, as in {1,2}";
    case ValueForm::kLimid:
      return "an interface id, as in 0x01000003";
    case ValueForm::kLimids:
      return "interface ids in square brackets, as in [0x01000003,0x01000004]";
    case ValueForm::kVlanInfo:
      return "two numbers, as in 1/2";
    case ValueForm::kMplsPorts:
      return "two interface ids, as in 0x03000007/0x01000003";
  }
  return {};
}

std::string noNumber(std::string_view text, unsigned bits) {
  const std::string range = " number from 0 to " + std::to_string(mostOf(bits));
  if (text.empty()) return 'a' + range + " is missing";
  const bool startsWithZero =
      text.size() > 1 && text[0] == '0' && text.find_first_not_of("0123456789") == text.npos;
  if (startsWithZero) return inQuotes(text) + " begins with a zero, which decimal numbers do not";
  return inQuotes(text) + " is no" + range;
}

std::string noName(std::string_view kind, const Enumeration& names, std::string_view text,
                   unsigned bits) {
  const bool isNumber = parseNumber(text, bits).has_value();
  if (!isNumber && text.find_first_of("-0123456789") == 0) return noNumber(text, bits);
  return "there is no " + std::string(kind) + ' ' + inQuotes(text) + suggestion(text, names.all());
}

// A leading zero is refused, because in other programs it makes a number octal.
std::optional<std::uint32_t> parseNumber(std::string_view text, unsigned bits) {
  int base = 10;
  if (text.size() > 2 && text[0] == '0' && text[1] == 'x') {
    base = 16;
    text.remove_prefix(2);
  } else if (text.size() > 1 && text[0] == '0') {
    return std::nullopt;
  }
  std::uint32_t value = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (fault != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (bits < 32 && value >> bits != 0) return std::nullopt;
  return value;
}

std::optional<std::uint32_t> parseName(const Enumeration& names, std::string_view text,
                                       unsigned bits) {
  const auto value = names.fromName(text);
  return value ? value : parseNumber(text, bits);
}

std::optional<std::int32_t> parseCounterType(std::string_view text) {
  const bool negative = !text.empty() && text[0] == '-';
  const auto value =
      negative ? parseNumber(text.substr(1), 32) : parseName(kNamesOf<counter_type_t>, text);
  constexpr std::int64_t kMax = std::numeric_limits<std::int32_t>::max();
  if (!value || *value > kMax + (negative ? 1 : 0)) return std::nullopt;
  return static_cast<std::int32_t>(negative ? -std::int64_t{*value} : std::int64_t{*value});
}

std::string_view takeWord(std::string_view* text) {
  const std::string_view all = *text;
  std::size_t begin = 0;
  while (begin < all.size() && isWordBreak(all[begin])) ++begin;
  std::size_t end = begin;
  while (end < all.size() && !isWordBreak(all[end])) ++end;
  *text = all.substr(end);
  return all.substr(begin, end - begin);
}

void appendNumber(std::uint32_t value, std::string* out) { appendDecimal(value, out); }

void appendName(const Enumeration& names, std::uint32_t value, std::string* out) {
  const std::string_view name = names.nameOf(value);
  if (name.empty()) return appendNumber(value, out);
  *out += name;
}

void appendLimid(std::uint32_t limid, std::string* out) { appendHexNumber(limid, 8, out); }

}  // namespace FiltersInspect
