#include "packet_words.h"

#include <algorithm>

#include <filter_inspect/filter_analysis.h>

#include "report/hex.h"

namespace FiltersInspect {
namespace {

constexpr std::string_view kLacking = "none";

template <class Combine>
FieldValue each(const FieldValue& a, const FieldValue& b, Combine combine) {
  return {combine(a[0], b[0]), combine(a[1], b[1])};
}
FieldValue both(const FieldValue& a, const FieldValue& b) {
  return each(a, b, [](std::uint64_t x, std::uint64_t y) { return x & y; });
}
FieldValue either(const FieldValue& a, const FieldValue& b) {
  return each(a, b, [](std::uint64_t x, std::uint64_t y) { return x | y; });
}
FieldValue without(const FieldValue& a, const FieldValue& b) {
  return each(a, b, [](std::uint64_t x, std::uint64_t y) { return x & ~y; });
}

// The bits of a number. Bit 0 is the lowest.
bool hasBit(const FieldValue& value, unsigned bit, unsigned width) {
  const std::uint64_t half = width > 64 && bit < 64 ? value[1] : value[0];
  return (half >> (bit % 64) & 1) != 0;
}
FieldValue bitAt(unsigned bit, unsigned width) {
  return without(lowBits(bit + 1, width), lowBits(bit, width));
}
unsigned zerosAtEnd(const FieldValue& value, unsigned width) {
  unsigned count = 0;
  while (count < width && !hasBit(value, count, width)) ++count;
  return count;
}
std::vector<unsigned> bitsOf(const FieldValue& value, unsigned width) {
  std::vector<unsigned> bits;
  for (unsigned bit = 0; bit < width; ++bit) {
    if (hasBit(value, bit, width)) bits.push_back(bit);
  }
  return bits;
}

// If there are many ranges, and they are the values under one mask, the mask takes their place.
void shorten(FieldSet* field, unsigned width) {
  auto& ranges = field->values;
  if (ranges.size() <= FieldSet::kMostRanges) return;
  const FieldValue size = without(ranges[0].last, ranges[0].first);
  FieldValue all = lowBits(width, width), any = {};
  for (const ValuePair& range : ranges) {
    const bool isBlock =
        both(range.first, size) == FieldValue{} && either(range.first, size) == range.last;
    if (!isBlock) return;
    all = both(all, range.first);
    any = either(any, range.first);
  }
  const bool isMask = size == lowBits(static_cast<unsigned>(bitsOf(size, width).size()), width);
  const std::size_t holes = bitsOf(without(any, all), width).size();
  if (!isMask || holes >= 32 || ranges.size() != std::size_t{1} << holes) return;
  const FieldValue mask = without(lowBits(width, width), either(size, without(any, all)));
  *field = {field->number, FieldSet::Form::kMasked, {{all, mask}}};
}

// --- Reading -------------------------------------------------------------------------------------

// A field in the form in which it is written. The word `dscp` is another notation for a ToS byte
// whose two ECN bits are 0, as in a rule with this word.
struct Written {
  explicit Written(std::string_view its_name)
      : name(its_name),
        is_dscp(name == kDscp),
        field(packetField(is_dscp ? nameOf(FiltersCommon::FILTERS_MATCH_TOS) : name)) {}

  FormRow form() const {
    if (is_dscp) return kDscpRow;
    const FieldRow& row = packetFields()[*field];
    return {row.form, row.bits, {}, row.names};
  }
  std::optional<FieldValue> parse(std::string_view value) const {
    if (value == kLacking) return std::nullopt;
    if (!is_dscp) return parseField(packetFields()[*field], value);
    const auto dscp = parseName(kDscpRow.names, value, kDscpRow.bits);
    return dscp ? std::optional(FieldValue{*dscp, 0}) : std::nullopt;
  }
  FieldSet having(FieldValue value) const {
    if (is_dscp) value[0] = tosOf(static_cast<std::uint32_t>(value[0]));
    return {*field, FieldSet::Form::kRanges, {{value, value}}};
  }
  std::string noValue(std::string_view value) const {
    if (value == kLacking) return "none stands alone, for packets that lack the field";
    const FormRow row = form();
    if (row.names.all != nullptr) return noName(name, row.names, value, row.bits);
    return std::string(name) + " is " + describe(row);
  }

  std::string_view name;
  bool is_dscp;
  std::optional<std::uint8_t> field;
};

std::string noSuchField(std::string_view name) {
  std::vector<std::string_view> names = packetFieldNames();
  names.push_back(kDscp);
  return "there is no such field" + suggestion(name, names, "filter-inspect names fields");
}

// Converts values of the word `dscp` to values of the field tos.
FieldSet asTos(const FieldSet& dscps) {
  if (dscps.form == FieldSet::Form::kMasked) {
    const ValuePair& one = dscps.values[0];
    return {dscps.number,
            dscps.form,
            {{{tosOf(static_cast<std::uint32_t>(one.first[0])), 0},
              {tosOf(static_cast<std::uint32_t>(one.last[0])) | 3, 0}}}};
  }
  FieldSet field = {dscps.number, dscps.form, {}};
  for (const ValuePair& range : dscps.values) {
    for (std::uint64_t dscp = range.first[0]; dscp <= range.last[0]; ++dscp) {
      const FieldValue tos = {tosOf(static_cast<std::uint32_t>(dscp)), 0};
      field.values.push_back({tos, tos});
    }
  }
  return field;
}

// Reads the value of a field in a packet set. The value may have a mask, or be a range or a list.
class RoomReader {
 public:
  struct Fault {
    std::string_view piece;
    std::string why;
  };
  RoomReader(const Written& written, std::string_view value)
      : written_(written), row_(written.form()), value_(value) {}

  std::optional<FieldSet> read() {
    field_ = {*written_.field, FieldSet::Form::kRanges, {}};
    if (value_.empty() || value_[0] != '{') {
      readItem(value_);
    } else if (value_.back() != '}') {
      fail(value_, "there is no '}' behind it; a list has no blanks, as in {1,4-6}");
    } else if (value_ == "{}") {
      fail(value_,
           "the list is empty; leave the field out for any value, or write none for "
           "packets that lack it");
    } else {
      readList(value_.substr(1, value_.size() - 2));
    }
    if (fault_) return std::nullopt;
    const unsigned width = row_.bits;
    if (written_.is_dscp) field_ = asTos(field_);
    if (field_.form == FieldSet::Form::kRanges) joinRanges(&field_, written_.is_dscp ? 8 : width);
    return std::move(field_);
  }
  const Fault& fault() const { return *fault_; }
 private:
  void fail(std::string_view piece, std::string why) {
    if (!fault_) fault_ = {piece, std::move(why)};
  }

  void readList(std::string_view list) {
    is_list_ = true;
    for (std::size_t comma = 0; comma != list.npos && !fault_;) {
      comma = list.find(',');
      const std::string_view item = list.substr(0, comma);
      if (item.empty()) return fail(value_, "a value is missing beside a comma");
      readItem(item);
      list.remove_prefix(comma == list.npos ? 0 : comma + 1);
    }
  }

  // Names of values may contain hyphens, so every hyphen of a range is tried as the separator of
  // its ends.
  void readItem(std::string_view item) {
    if (const auto value = written_.parse(item)) return add({*value, *value});
    const std::size_t slash = item.find('/');
    if (slash != item.npos) return readMasked(item, slash);
    std::size_t last = item.npos;
    for (std::size_t at = item.find('-', 1); at != item.npos; at = item.find('-', at + 1)) {
      const auto low = written_.parse(item.substr(0, at)),
                 high = written_.parse(item.substr(at + 1));
      if (low && high && *low > *high) return fail(item, "the range ends before it begins");
      if (low && high) return add({*low, *high});
      last = low && last == item.npos ? at : last;
    }
    if (last != item.npos && last + 1 != item.size()) item.remove_prefix(last + 1);
    fail(item, written_.noValue(item));
  }

  void readMasked(std::string_view item, std::size_t slash) {
    const std::string_view text = item.substr(0, slash), mask_text = item.substr(slash + 1);
    const auto value = written_.parse(text);
    if (!value) return fail(text, written_.noValue(text));
    const auto mask = maskOf(mask_text);
    if (!mask) return fail(mask_text, noMask(text));
    const FieldSet one = fieldUnder(field_.number, *value, *mask, row_.bits);
    if (is_list_ && one.form == FieldSet::Form::kMasked) {
      return fail(item, "a mask with holes stands alone, and not in a list");
    }
    if (one.form == FieldSet::Form::kMasked) {
      field_ = one;
    } else {
      for (const ValuePair& range : one.values) add(range);
    }
  }

  std::optional<FieldValue> maskOf(std::string_view text) const {
    if (!isAddress(row_.form)) {
      const auto mask = text.substr(0, 2) == "0x" ? parseNumber(text, row_.bits) : std::nullopt;
      return mask ? std::optional(FieldValue{*mask, 0}) : std::nullopt;
    }
    if (const auto mask = written_.parse(text)) return mask;
    const auto length = parseNumber(text, 8);
    if (!length || *length > row_.bits) return std::nullopt;
    return without(lowBits(row_.bits, row_.bits), lowBits(row_.bits - *length, row_.bits));
  }
  std::string noMask(std::string_view value) const {
    if (isAddress(row_.form)) {
      return "this is no mask: write a length from 0 to " + std::to_string(row_.bits) +
             ", or an address";
    }
    std::string example = std::string(value) + '/';
    appendHexNumber(mostOf(row_.bits), 1, &example);
    return "write " + std::string(value) +
           " for this value alone, or a mask in hexadecimal as in " + example;
  }
  void add(const ValuePair& range) { field_.values.push_back(range); }

  const Written& written_;
  const FormRow row_;
  const std::string_view value_;
  bool is_list_ = false;
  FieldSet field_;
  std::optional<Fault> fault_;
};

class WordsReader {
 public:
  WordsReader(std::string_view text, WordsOf kind, std::size_t max_findings)
      : start_(text.data()), rest_(text), kind_(kind), faults_(max_findings) {}

  std::optional<std::vector<FieldSet>> read(Report* report) {
    while (true) {
      rest_.remove_prefix(std::min(rest_.find_first_not_of(kBlanks), rest_.size()));
      if (rest_.empty()) break;
      const std::string_view word = rest_.substr(0, rest_.find_first_of(kBlanks));
      rest_.remove_prefix(word.size());
      readWord(word);
    }
    if (faults_.empty()) return std::move(fields_);
    if (report != nullptr) report->append(faults_.take());
    return std::nullopt;
  }
 private:
  // Columns count from 1.
  void fail(Code code, std::string_view piece, const std::string& why) {
    Finding* finding = faults_.add(code);
    if (finding == nullptr) return;
    finding->path = "1:" + std::to_string(piece.data() - start_ + 1);
    finding->before = piece;
    finding->word = piece;
    finding->message = '\'' + finding->before + "': " + why;
  }

  void readWord(std::string_view word) {
    const std::size_t sign = word.find('=');
    if (sign == word.npos) {
      return fail(Code::kTextSyntax, word, "a value is missing, as in ttl=64 or ttl=none");
    }
    const std::string_view name = word.substr(0, sign);
    const Written written(name);
    if (!written.field) return fail(Code::kTextValue, name, noSuchField(name));
    const auto field = readValue(written, word, word.substr(sign + 1));
    if (!field) return;
    const auto at = std::lower_bound(
        fields_.begin(), fields_.end(), field->number,
        [](const FieldSet& one, std::uint8_t number) { return one.number < number; });
    if (at != fields_.end() && at->number == field->number) {
      return fail(Code::kTextRepeated, word, "the field is told twice");
    }
    fields_.insert(at, *field);
  }

  std::optional<FieldSet> readValue(const Written& written, std::string_view word,
                                    std::string_view value) {
    if (value == kLacking) return FieldSet{*written.field, FieldSet::Form::kLacks, {}};
    if (const auto one = written.parse(value)) return written.having(*one);
    RoomReader room(written, value);
    auto field = room.read();
    if (field && kind_ == WordsOf::kSets) return field;
    if (field) {
      fail(Code::kTextValue, word,
           written.noValue(value) + "; a packet has one value, and search takes sets");
    } else if (kind_ == WordsOf::kPackets || room.fault().piece == value) {
      fail(Code::kTextValue, word,
           kind_ == WordsOf::kPackets ? written.noValue(value) : room.fault().why);
    } else {
      fail(Code::kTextValue, room.fault().piece, room.fault().why);
    }
    return std::nullopt;
  }

  const char* const start_;
  std::string_view rest_;
  const WordsOf kind_;
  LimitedReport faults_;
  std::vector<FieldSet> fields_;
};

// --- Writing -------------------------------------------------------------------------------------

void appendRange(const FieldRow& row, const ValuePair& range, std::string* out) {
  appendField(row, range.first, out);
  if (range.first == range.last) return;
  std::vector<ValuePair> masks;
  if (isAddress(row.form)) appendPrefixes(range, row.bits, &masks);
  if (masks.size() == 1) {
    *out += '/' + std::to_string(row.bits - zerosAtEnd(masks[0].last, row.bits));
  } else {
    *out += '-';
    appendField(row, range.last, out);
  }
}

}  // namespace

std::optional<std::vector<FieldSet>> parsePacketWords(std::string_view text, WordsOf kind,
                                                      Report* report, std::size_t max_findings) {
  return WordsReader(text, kind, max_findings).read(report);
}

void appendWord(const FieldSet& field, std::string* out) {
  const FieldRow& row = packetFields()[field.number];
  *out += row.name;
  *out += '=';
  if (field.form == FieldSet::Form::kLacks) {
    *out += kLacking;
  } else if (field.form == FieldSet::Form::kMasked) {
    appendField(row, field.values[0].first, out);
    *out += '/';
    if (isAddress(row.form)) {
      appendField(row, field.values[0].last, out);
    } else {
      appendHexNumber(static_cast<std::uint32_t>(field.values[0].last[0]), 1, out);
    }
  } else {
    const bool is_list = field.values.size() > 1;
    if (is_list) *out += '{';
    for (std::size_t i = 0; i < field.values.size(); ++i) {
      if (i != 0) *out += ',';
      appendRange(row, field.values[i], out);
    }
    if (is_list) *out += '}';
  }
}

FieldSet fieldUnder(std::uint8_t number, FieldValue value, const FieldValue& mask, unsigned width) {
  value = both(value, mask);
  const FieldValue block = lowBits(zerosAtEnd(mask, width), width);
  const FieldValue holes = without(lowBits(width, width), either(mask, block));
  const std::vector<unsigned> free = bitsOf(holes, width);
  FieldSet field = {number, FieldSet::Form::kMasked, {{value, mask}}};
  if (free.size() >= 32 || std::size_t{1} << free.size() > FieldSet::kMostRanges) return field;
  field = {number, FieldSet::Form::kRanges, {}};
  for (std::size_t choice = 0; choice >> free.size() == 0; ++choice) {
    FieldValue first = value;
    for (std::size_t i = 0; i < free.size(); ++i) {
      if ((choice >> i & 1) != 0) first = either(first, bitAt(free[i], width));
    }
    field.values.push_back({first, either(first, block)});
  }
  return field;
}

void joinRanges(FieldSet* field, unsigned width) {
  auto& ranges = field->values;
  std::sort(ranges.begin(), ranges.end(),
            [](const ValuePair& a, const ValuePair& b) { return a.first < b.first; });
  std::size_t end = 0;
  const FieldValue most = lowBits(width, width);
  for (const ValuePair& range : ranges) {
    ValuePair* last = end > 0 ? &ranges[end - 1] : nullptr;
    if (last != nullptr && (last->last == most || range.first <= nextOf(last->last, width))) {
      last->last = std::max(last->last, range.last);
    } else {
      ranges[end++] = range;
    }
  }
  ranges.resize(end);
  shorten(field, width);
}

FieldValue lowBits(unsigned count, unsigned width) {
  const auto ones = [](unsigned bits) { return bits == 0 ? 0 : ~std::uint64_t{0} >> (64 - bits); };
  if (width <= 64) return {ones(count), 0};
  return {ones(count > 64 ? count - 64 : 0), ones(std::min(count, 64U))};
}

FieldValue nextOf(FieldValue value, unsigned width) {
  if (width <= 64 || ++value[1] == 0) ++value[0];
  return value;
}

FieldValue lastBefore(FieldValue value, unsigned width) {
  if (width <= 64 || value[1]-- == 0) --value[0];
  return value;
}

// Each mask has as many free bits as fit at its position in the range.
void appendPrefixes(const ValuePair& range, unsigned width, std::vector<ValuePair>* masks) {
  for (FieldValue first = range.first;; first = nextOf(first, width)) {
    unsigned free = 0;
    while (free < width) {
      const FieldValue block = lowBits(free + 1, width);
      if (both(first, block) != FieldValue{} || either(first, block) > range.last) break;
      ++free;
    }
    const FieldValue block = lowBits(free, width);
    masks->push_back({first, without(lowBits(width, width), block)});
    first = either(first, block);
    if (first == range.last) return;
  }
}

void appendGaps(const std::vector<ValuePair>& ranges, unsigned width,
                std::vector<ValuePair>* masks) {
  const FieldValue most = lowBits(width, width);
  FieldValue next = {};
  for (const ValuePair& range : ranges) {
    if (next < range.first) appendPrefixes({next, lastBefore(range.first, width)}, width, masks);
    if (range.last == most) return;
    next = nextOf(range.last, width);
  }
  appendPrefixes({next, most}, width, masks);
}

}  // namespace FiltersInspect
