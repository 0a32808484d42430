#include "value_text.h"

#include <charconv>
#include <limits>

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
void appendList(const AnyMessage& message, int field, std::string* out, Append append) {
  const std::size_t count = countIn(message, field);
  for (std::size_t i = 0; i < count; ++i) {
    if (i != 0) *out += ',';
    append(numberIn(message, field, i));
  }
}

void appendLimids(const FormRow& row, const AnyMessage& message, std::string* out) {
  *out += '[';
  appendList(message, row.fields[0], out, [&](std::uint32_t limid) { appendLimid(limid, out); });
  *out += ']';
  if (row.fields[1] == 0 || countIn(message, row.fields[1]) == 0) return;
  *out += '!';
  appendList(message, row.fields[1], out,
             [&](std::uint32_t type) { appendName(row.names, type, out); });
}

// Parses one value. Pieces of the text point into it, so that a fault has a place.
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
    if (!fault_) fault_ = {std::move(why), static_cast<std::size_t>(piece.data() - text_.data())};
  }

  void failNumber(std::string_view piece) {
    fail(piece, "a number of up to " + std::to_string(row_.bits) + " bits is wanted");
  }

  // The value of a number or name; 0 and a fault if there is none.
  std::uint32_t number(std::string_view piece) {
    const auto value = parseNumber(piece, row_.bits);
    if (!value) failNumber(piece);
    return value.value_or(0);
  }
  std::uint32_t named(std::string_view piece) {
    const auto value = parseName(row_.names, piece);
    if (!value) fail(piece, "neither a name known here nor a number");
    return value.value_or(0);
  }

  // Calls `use` for each piece between commas; not at all for an empty text.
  template <class Use>
  void each(std::string_view list, Use use) {
    for (std::size_t comma = 0; !list.empty() && !fault_; list.remove_prefix(comma + 1)) {
      comma = list.find(',');
      use(list.substr(0, comma));
      if (comma == list.npos) return;
      if (comma + 1 == list.size()) return fail(list.substr(comma), "nothing behind the comma");
    }
  }

  // Reads both parts of a value that are separated by a sign.
  template <class Use>
  void pair(char sign, Use use) {
    const std::size_t at = text_.find(sign);
    if (at == text_.npos) {
      return fail(text_.substr(text_.size()),
                  std::string("a second part behind '") + sign + "' is wanted");
    }
    setNumber(message_, row_.fields[0], use(text_.substr(0, at)));
    setNumber(message_, row_.fields[1], use(text_.substr(at + 1)));
  }

  void readAddress() {
    const std::size_t slash = text_.find('/');
    const std::string_view text = text_.substr(0, slash);
    const auto bytes = parseAddress(row_.form, text);
    if (!bytes) return fail(text, "this is no address of the kind wanted");
    setAddress(message_, row_.fields[0], row_.form, *bytes);
    if (row_.fields[1] == 0) {
      if (slash != text_.npos) fail(text_.substr(slash), "no mask may stand here");
      return;
    }
    auto mask = std::optional(prefixMask(row_.bits));
    if (slash != text_.npos) mask = readMask(text_.substr(slash + 1));
    if (mask) setAddress(message_, row_.fields[1], row_.form, *mask);
  }

  std::optional<AddressBytes> readMask(std::string_view text) {
    if (auto mask = parseAddress(row_.form, text)) return mask;
    const auto length = row_.form == ValueForm::kMac ? std::nullopt : parseNumber(text, 8);
    if (length && *length <= row_.bits) return prefixMask(*length);
    fail(text, "this is no mask for the address");
    return std::nullopt;
  }

  void readLimids() {
    const std::size_t end = text_.find(']');
    if (text_.empty() || text_[0] != '[' || end == text_.npos) {
      return fail(text_, "a list in square brackets is wanted");
    }
    each(text_.substr(1, end - 1),
         [&](std::string_view piece) { addNumber(message_, row_.fields[0], number(piece)); });
    const std::string_view rest = text_.substr(end + 1);
    if (rest.empty()) return;
    if (rest.size() == 1 || rest[0] != '!' || row_.fields[1] == 0) {
      return fail(rest, "nothing of this kind may follow the list");
    }
    each(rest.substr(1),
         [&](std::string_view piece) { addNumber(message_, row_.fields[1], named(piece)); });
  }

  void readNumbers() {
    if (text_.size() < 2 || text_.front() != '{' || text_.back() != '}') {
      return fail(text_, "a set in braces is wanted");
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
        return setNumber(message_, row_.fields[0], number(text_));
      case ValueForm::kName:
        return setNumber(message_, row_.fields[0], named(text_));
      case ValueForm::kBoolean:
        if (text_ != "true" && text_ != "false") return fail(text_, "true or false is wanted");
        return setNumber(message_, row_.fields[0], text_ == "true" ? 1 : 0);
      case ValueForm::kMac:
      case ValueForm::kIPv4:
      case ValueForm::kIPv6:
        return readAddress();
      case ValueForm::kPortMask:
      case ValueForm::kVlanInfo:
        return pair('/', asNumber);
      case ValueForm::kPortRange:
        return pair('-', asNumber);
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
  std::string text = std::to_string(counter.id()) + '=';
  const std::string_view name = nameOf(static_cast<counter_type_t>(counter.type()));
  return text += name.empty() ? std::to_string(counter.type()) : std::string(name);
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
      if (row.fields[1] == 0) return;
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
      appendList(message, row.fields[0], out, [&](std::uint32_t n) { appendNumber(n, out); });
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

// A leading zero is refused, since it makes a number octal elsewhere.
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

std::optional<std::uint32_t> parseName(const Enumeration& names, std::string_view text) {
  const auto value = names.fromName(text);
  return value ? value : parseNumber(text, 32);
}

std::optional<std::int32_t> parseCounterType(std::string_view text) {
  const bool negative = !text.empty() && text[0] == '-';
  const auto value =
      negative ? parseNumber(text.substr(1), 32) : parseName(kNamesOf<counter_type_t>, text);
  constexpr std::int64_t kMax = std::numeric_limits<std::int32_t>::max();
  if (!value || *value > kMax + (negative ? 1 : 0)) return std::nullopt;
  return static_cast<std::int32_t>(negative ? -std::int64_t{*value} : std::int64_t{*value});
}

void appendNumber(std::uint32_t value, std::string* out) {
  char digits[std::numeric_limits<std::uint32_t>::digits10 + 1];
  out->append(digits, std::to_chars(digits, std::end(digits), value).ptr);
}

void appendName(const Enumeration& names, std::uint32_t value, std::string* out) {
  const std::string_view name = names.nameOf(value);
  if (name.empty()) return appendNumber(value, out);
  *out += name;
}

void appendLimid(std::uint32_t limid, std::string* out) { appendHexNumber(limid, 8, out); }

}  // namespace FiltersInspect
