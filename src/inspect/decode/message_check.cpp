#include "message_check.h"

#include <google/protobuf/reflection.h>

#include <algorithm>
#include <limits>
#include <set>
#include <utility>

#include <filter_inspect/filter_names.h>

namespace FiltersInspect {
namespace {

using google::protobuf::Reflection;
using Field = MessageCheck::Field;

// The number that the runtime stores for a varint, with its sign.
std::int64_t storedOf(const Field& field, std::uint64_t varint) {
  switch (field.cpp_type()) {
    case Field::CPPTYPE_BOOL:
      return varint != 0 ? 1 : 0;
    case Field::CPPTYPE_INT32:
      return static_cast<std::int32_t>(static_cast<std::uint32_t>(varint));
    case Field::CPPTYPE_UINT32:
      return static_cast<std::uint32_t>(varint);
    default:
      return static_cast<std::int64_t>(varint);
  }
}

std::int64_t numberIn(const google::protobuf::Message& message, const Field& field) {
  const Reflection& reflection = *message.GetReflection();
  switch (field.cpp_type()) {
    case Field::CPPTYPE_BOOL:
      return reflection.GetBool(message, &field) ? 1 : 0;
    case Field::CPPTYPE_INT32:
      return reflection.GetInt32(message, &field);
    default:
      return reflection.GetUInt32(message, &field);
  }
}

std::string textIn(const google::protobuf::Message& message, const Field& field) {
  if (field.cpp_type() != Field::CPPTYPE_STRING) return std::to_string(numberIn(message, field));
  return shownBytes(message.GetReflection()->GetString(message, &field));
}

std::vector<std::uint32_t> numbersIn(const google::protobuf::Message& message, const Field& field) {
  const auto numbers = message.GetReflection()->GetRepeatedFieldRef<std::uint32_t>(message, &field);
  return {numbers.begin(), numbers.end()};
}

// `bits` are the bits of the received number.
void sayCut(Finding* finding, std::string before, std::uint64_t bits, std::int64_t after) {
  finding->before = std::move(before);
  finding->after = std::to_string(after);
  finding->message = finding->before + " is kept as " + finding->after;
  for (const int width : {32, 16, 8}) {
    if (static_cast<std::int64_t>(bits & ((std::uint64_t{1} << width) - 1)) != after) continue;
    finding->message = finding->before + " is cut to " + finding->after + ", the low " +
                       std::to_string(width) + " bits";
    break;
  }
}

std::string fieldName(const Field& field) { return std::string(field.name()); }
bool isMessage(const Field& field) { return field.cpp_type() == Field::CPPTYPE_MESSAGE; }
bool isBytes(const Field& field) { return field.cpp_type() == Field::CPPTYPE_STRING; }
std::uint32_t wireTypeOf(const Field& field) {
  return isMessage(field) || isBytes(field) ? kLength : kVarint;
}

}  // namespace

// --- The walk ------------------------------------------------------------------------------------

MessageCheck::MessageCheck(const Descriptor* descriptor)
    : descriptor_(descriptor), fields_(static_cast<std::size_t>(descriptor->field_count())) {
  for (int i = 0; i < descriptor->field_count(); ++i) {
    const auto number = static_cast<std::size_t>(descriptor->field(i)->number());
    if (number >= by_number_.size()) by_number_.resize(number + 1);
    by_number_[number] = descriptor->field(i);
  }
}

ByteRange MessageCheck::Occurrences::hull() const {
  if (elements.empty()) return last;
  const std::size_t begin = elements.front().offset;
  return {begin, elements.back().offset + elements.back().length - begin};
}

bool MessageCheck::walk(std::string_view bytes, const MessagePart& part, int depth, bool lenient,
                        DecodeFindings* findings, const Visit& visit) {
  for (Occurrences& field : fields_) {
    field.count = 0;
    field.elements.clear();
  }
  WireScanner reader(bytes, part.bytes.offset + part.head, part.bytes.offset + part.bytes.length,
                     depth, lenient);
  std::uint32_t highest = 0;
  bool ascending = true, whole = true;
  for (WireField wire; whole && reader.next(&wire);) {
    const Field* field = wire.number < by_number_.size() ? by_number_[wire.number] : nullptr;
    const ByteRange range = {wire.begin, wire.end - wire.begin};
    const bool packed =
        field != nullptr && field->is_repeated() && !isMessage(*field) && wire.wire_type == kLength;
    if (field == nullptr || (wire.wire_type != wireTypeOf(*field) && !packed)) {
      if (!reader.broken()) noteDropped(wire, field != nullptr, part, findings);
      continue;
    }
    if (std::exchange(highest, std::max(highest, wire.number)) > wire.number && ascending) {
      ascending = false;
      findings->add(Code::kOrderDiffers, {&part, {}, MessagePart::kAlone, range},
                    "fields are written in the order of their numbers");
    }
    Occurrences& seen = fields_[static_cast<std::size_t>(field->index())];
    if (isMessage(*field)) {
      const MessagePart inner = {&part, field->name(), seen.count++, range,
                                 wire.value - wire.begin};
      if (!wire.plain && !reader.broken()) {
        findings->add(Code::kEncodingDiffers, inner, "its length is written in other bytes");
      }
      whole = visit(*field, inner);
    } else if (packed) {
      whole = notePacked(wire, *field, bytes, part, findings);
    } else if (!reader.broken()) {
      note(wire, *field, part, findings);
    }
  }
  broken_ = !whole;
  if (whole && reader.broken()) {
    noteEnd(reader.position(), bytes, part, findings);
    whole = false;
  }
  if (!broken_) noteMissing(part, findings);
  return whole;
}

void MessageCheck::noteEnd(std::size_t at, std::string_view bytes, const MessagePart& part,
                           DecodeFindings* findings) {
  const MessagePart rest = {&part, {}, MessagePart::kAlone, {at, bytes.size() - at}};
  if (part.outer == nullptr && at + 1 == bytes.size() && bytes[at] == '\0') {
    findings->add(Code::kTrailingZero, rest, "the zero byte that ends a buffer");
  } else {
    broken_ = true;
    findings->add(Code::kBytesBroken, rest, "nothing can be read from here on");
  }
}

void MessageCheck::noteDropped(const WireField& wire, bool isKnown, const MessagePart& part,
                               DecodeFindings* findings) {
  const ByteRange range = {wire.begin, wire.end - wire.begin};
  Finding* finding = findings->add(isKnown ? Code::kFieldWireType : Code::kFieldUnknown,
                                   {&part, {}, MessagePart::kAlone, range});
  if (finding == nullptr) return;
  finding->message = "field " + std::to_string(wire.number) +
                     (isKnown ? " is written as another kind of value" : " is not known") +
                     ", and dropped";
}

// A field that appears once in a message, or one element of a repeated number.
void MessageCheck::note(const WireField& wire, const Field& field, const MessagePart& part,
                        DecodeFindings* findings) {
  Occurrences& seen = fields_[static_cast<std::size_t>(field.index())];
  const ByteRange range = {wire.begin, wire.end - wire.begin};
  MessagePart its = {&part, field.name(), MessagePart::kAlone, range};
  if (field.is_repeated()) {
    its.index = seen.count;
    seen.elements.push_back(range);
  } else if (seen.count != 0) {
    const MessagePart earlier = {&part, field.name(), MessagePart::kAlone, seen.last};
    if (Finding* finding = findings->add(Code::kFieldRepeated, earlier)) {
      finding->message = fieldName(field) + " stands there again: this one is lost";
    }
  }
  ++seen.count;
  seen.last = range;
  if (isBytes(field)) {
    if (!wire.plain) findings->add(Code::kEncodingDiffers, its, "it is written in other bytes");
  } else {
    noteNumber(field, wire.varint, wire.plain, its, findings);
  }
}

void MessageCheck::noteNumber(const Field& field, std::uint64_t varint, bool plain,
                              const MessagePart& part, DecodeFindings* findings) {
  const std::int64_t stored = storedOf(field, varint);
  const bool isBool = field.cpp_type() == Field::CPPTYPE_BOOL;
  if (static_cast<std::uint64_t>(stored) != varint && !isBool) {
    if (Finding* finding = findings->add(Code::kValueCut, part))
      sayCut(finding, std::to_string(varint), varint, stored);
  } else if (!plain || static_cast<std::uint64_t>(stored) != varint) {
    findings->add(Code::kEncodingDiffers, part, "it is written in other bytes");
  }
}

bool MessageCheck::notePacked(const WireField& wire, const Field& field, std::string_view bytes,
                              const MessagePart& part, DecodeFindings* findings) {
  Occurrences& seen = fields_[static_cast<std::size_t>(field.index())];
  const ByteRange range = {wire.begin, wire.end - wire.begin};
  findings->add(Code::kEncodingDiffers, {&part, field.name(), MessagePart::kAlone, range},
                "its numbers are packed");
  seen.last = range;
  WireScanner reader(bytes, wire.value, wire.end, 0, false);
  while (reader.position() != wire.end) {
    const std::size_t begin = reader.position();
    std::uint64_t varint = 0;
    bool plain = true;
    if (!reader.readVarint(&varint, &plain)) {
      findings->add(Code::kBytesBroken,
                    {&part, field.name(), MessagePart::kAlone, {begin, bytes.size() - begin}},
                    "nothing can be read from here on");
      return false;
    }
    const ByteRange element = {begin, reader.position() - begin};
    noteNumber(field, varint, plain, {&part, field.name(), seen.count++, element}, findings);
    seen.elements.push_back(element);
  }
  return true;
}

void MessageCheck::noteMissing(const MessagePart& part, DecodeFindings* findings) {
  for (int i = 0; i < descriptor_->field_count(); ++i) {
    const Field& field = *descriptor_->field(i);
    const Occurrences& seen = fields_[static_cast<std::size_t>(i)];
    if (!field.is_required() || seen.count != 0 || seen.assumed) continue;
    Finding* finding = findings->add(Code::kRequiredMissing,
                                     {&part, field.name(), MessagePart::kAlone, part.bytes});
    if (finding == nullptr) continue;
    // The policer is the only field of bytes that is required.
    finding->message = isBytes(field)
                           ? "there is no policer: the default one is taken, which every "
                             "stage admits and which polices nothing"
                           : fieldName(field) + " is not there, and read as 0";
    // In the message of a match or an action, only the field for the type is required.
    if (findings->subject == Subject::kMatch) {
      finding->message = "a match without a type is read as the match ";
      finding->message += FiltersInspect::nameOf(FiltersCommon::filtersMatch_t());
    } else if (findings->subject == Subject::kAction) {
      finding->message = "an action without a type is read as the action ";
      finding->message += FiltersInspect::nameOf(FiltersCommon::filtersAction_t());
    }
  }
}

// --- The comparison ------------------------------------------------------------------------------

void MessageCheck::assume(int fieldNumber) {
  const Field& field = *by_number_[static_cast<std::size_t>(fieldNumber)];
  fields_[static_cast<std::size_t>(field.index())].assumed = true;
}

bool MessageCheck::hasCome(int fieldNumber) const {
  const Field& field = *by_number_[static_cast<std::size_t>(fieldNumber)];
  return fields_[static_cast<std::size_t>(field.index())].count != 0;
}

MessagePart MessageCheck::partOf(int fieldNumber, const MessagePart& outer) const {
  const Field& field = *by_number_[static_cast<std::size_t>(fieldNumber)];
  const Occurrences& seen = fields_[static_cast<std::size_t>(field.index())];
  return {&outer, field.name(), MessagePart::kAlone, seen.count == 0 ? outer.bytes : seen.last};
}

void MessageCheck::compare(const google::protobuf::Message& in,
                           const google::protobuf::Message& out, const MessagePart& part,
                           DecodeFindings* findings, const Echo& echo) {
  for (int i = 0; i < descriptor_->field_count(); ++i) {
    const Field& field = *descriptor_->field(i);
    if (isMessage(field) || (isBytes(field) && echo == nullptr)) continue;
    if (field.is_repeated()) {
      compareAll(field, in, out, part, findings, echo);
    } else {
      compareOne(field, in, out, part, findings);
    }
  }
}

// Compares the bytes of a field. The library must have kept at least a part of them.
void MessageCheck::compareBytes(const Field& field, const google::protobuf::Message& in,
                                const google::protobuf::Message& out, const MessagePart& part,
                                DecodeFindings* findings) {
  const Reflection& reflection = *in.GetReflection();
  const bool came = hasCome(field.number());
  std::string inScratch, outScratch;
  const std::string& before =
      came ? reflection.GetStringReference(in, &field, &inScratch) : inScratch;
  const std::string& after = reflection.GetStringReference(out, &field, &outScratch);
  const Code code = !came                          ? Code::kFieldDefaulted
                    : before.size() < after.size() ? Code::kBytesShort
                    : before.size() > after.size() ? Code::kBytesLong
                                                   : Code::kValueCut;
  if (before == after || (!came && field.is_required())) return;
  Finding* finding = findings->add(code, part);
  if (finding == nullptr) return;
  finding->before = shownBytes(before);
  finding->after = shownBytes(after);
  finding->message = fieldName(field) +
                     (came ? " has " + std::to_string(before.size()) + " bytes, and is kept as "
                           : " is not there, and read as ") +
                     finding->after;
}

void MessageCheck::compareOne(const Field& field, const google::protobuf::Message& in,
                              const google::protobuf::Message& out, const MessagePart& part,
                              DecodeFindings* findings) {
  const Reflection& reflection = *in.GetReflection();
  // If the bytes break off, the runtime may have stored a value for a field that is not in the
  // bytes.
  const bool came = hasCome(field.number());
  const bool kept = reflection.HasField(out, &field);
  if (!came && (!kept || broken_)) return;
  const MessagePart its = partOf(field.number(), part);
  if (!kept) {
    if (Finding* finding = findings->add(Code::kFieldUnused, its)) {
      finding->before = textIn(in, field);
      finding->message = fieldName(field) + " means nothing here, and is dropped";
    }
  } else if (isBytes(field)) {
    compareBytes(field, in, out, its, findings);
  } else {
    const std::int64_t before = numberIn(in, field), after = numberIn(out, field);
    if (!came && !field.is_required()) {
      Finding* finding = findings->add(Code::kFieldDefaulted, its);
      if (finding == nullptr) return;
      finding->after = std::to_string(after);
      finding->message = fieldName(field) + " is not there, and read as " + finding->after;
    } else if (before != after) {
      Finding* finding = findings->add(Code::kValueCut, its);
      if (finding != nullptr)
        sayCut(finding, std::to_string(before), static_cast<std::uint64_t>(before), after);
    }
  }
}

// Lets the library read each element by itself, to find out what it keeps of the element. Returns
// the values that the library should keep of all elements, in order.
std::vector<std::uint32_t> MessageCheck::compareElements(
    const Field& field, const google::protobuf::Message& in, const std::vector<std::uint32_t>& came,
    const MessagePart& all, DecodeFindings* findings, const Echo& echo) {
  const std::vector<ByteRange>& ranges = fields_[static_cast<std::size_t>(field.index())].elements;
  const Reflection& reflection = *in.GetReflection();
  const Field& type = *descriptor_->field(0);  // decides the class
  std::unique_ptr<google::protobuf::Message> single(in.New()), echoed(in.New());
  reflection.SetUInt32(single.get(), &type, reflection.GetUInt32(in, &type));
  reflection.AddUInt32(single.get(), &field, 0);
  std::vector<std::uint32_t> expected;
  std::set<std::uint32_t> distinct;
  for (std::size_t i = 0; i < came.size(); ++i) {
    const MessagePart its = {all.outer, all.field, i, i < ranges.size() ? ranges[i] : all.bytes};
    reflection.SetRepeatedUInt32(single.get(), &field, 0, came[i]);
    echoed->Clear();
    echo(*single, echoed.get());
    const bool isKept = reflection.FieldSize(*echoed, &field) == 1;
    const std::uint32_t value = isKept ? reflection.GetRepeatedUInt32(*echoed, &field, 0) : came[i];
    if (value != came[i]) {
      Finding* finding = findings->add(Code::kValueCut, its);
      if (finding != nullptr) sayCut(finding, std::to_string(came[i]), came[i], value);
    }
    if (distinct.insert(value).second) {
      expected.push_back(value);
    } else if (Finding* finding = findings->add(Code::kValueCollapsed, its)) {
      finding->before = std::to_string(came[i]);
      finding->after = std::to_string(value);
      finding->message = finding->after + " is in the set already";
    }
  }
  return expected;
}

void MessageCheck::compareAll(const Field& field, const google::protobuf::Message& in,
                              const google::protobuf::Message& out, const MessagePart& part,
                              DecodeFindings* findings, const Echo& echo) {
  const Reflection& reflection = *in.GetReflection();
  if (reflection.FieldSize(in, &field) == 0 && reflection.FieldSize(out, &field) == 0) return;
  const std::vector<std::uint32_t> came = numbersIn(in, field);
  std::vector<std::uint32_t> kept = numbersIn(out, field);
  if (came == kept) return;
  const Occurrences& seen = fields_[static_cast<std::size_t>(field.index())];
  const MessagePart all = {&part, field.name(), MessagePart::kAlone,
                           seen.count == 0 ? part.bytes : seen.hull()};
  if (kept.empty()) {
    if (Finding* finding = findings->add(Code::kFieldUnused, all)) {
      finding->message = fieldName(field) + " means nothing here, and is dropped";
    }
    return;
  }
  std::vector<std::uint32_t> expected = compareElements(field, in, came, all, findings, echo);
  if (expected == kept) return;
  std::sort(expected.begin(), expected.end());
  std::sort(kept.begin(), kept.end());
  if (expected == kept) {
    findings->add(Code::kOrderDiffers, all, "a set is written in ascending order");
  } else {
    findings->add(Code::kFieldUnused, all, "not all of the numbers are kept");
  }
}

}  // namespace FiltersInspect
