#include "entry_reader.h"

#include <iterator>
#include <stdexcept>
#include <utility>

#include <filter_inspect/filter_explain.h>
#include <filter_inspect/filter_names.h>

#include "catalogue/class_rows.h"
#include "catalogue/name_or_number.h"

namespace FiltersInspect {

using namespace FiltersCommon;

namespace {

template <class Message>
std::string_view writtenBy(const Message& message, std::string* scratch) {
  scratch->clear();
  static_cast<void>(message.AppendPartialToString(scratch));
  return *scratch;
}

// Names a part, for example "match ttl" or "counter 3".
std::string partText(Subject subject, std::uint32_t code) {
  const std::string kind = std::string(nameOf(subject)) + ' ';
  if (subject == Subject::kMatch) return kind + nameOrNumber(static_cast<filtersMatch_t>(code));
  if (subject == Subject::kAction) return kind + nameOrNumber(static_cast<filtersAction_t>(code));
  return kind + std::to_string(code);
}

// The fields that this message needs to become an action.
std::string missingIn(const ActionPB& message) {
  std::string missing;
  if (!message.has_vpn_id()) missing = "vpn_id";
  if (!message.has_mpls_access_port()) {
    missing += missing.empty() ? "mpls_access_port" : " and no mpls_access_port";
  }
  return missing;
}

}  // namespace

bool isUsual(const std::map<unsigned short, Counter>& counters) {
  std::uint32_t types = 1 << FILTERS_COUNTER_TYPE_INVALID;
  for (const auto& [id, counter] : counters) {
    if (nameOf(counter.GetType()).empty()) return false;
    const std::uint32_t type = std::uint32_t{1} << counter.GetType();
    if ((types & type) != 0) return false;
    types |= type;
  }
  return true;
}

bool EntryReader::read(const FiltersEntryPB& in, const MessagePart& part, int depth,
                       const FiltersGroup* group) {
  findings_->entry = in.id_();
  FiltersEntry entry;
  bool thrown = false;
  try {
    entry.convertFromFiltersEntryPB(&in);
  } catch (const std::invalid_argument&) {
    thrown = true;
  }
  out_->Clear();
  entry.convertToFiltersEntryPB(out_);
  Report refusal;
  if (group != nullptr && !thrown) {
    refusal = explainInsert(group->getStage(), group->getType(), entry);
  }
  const std::string_view body = part.content(bytes_);
  bool whole = true;
  if (thrown || !refusal.empty() || !isUsual(entry.getCounters()) ||
      out_->ByteSizeLong() != body.size() || writtenBy(*out_, &scratch_) != body) {
    whole = readParts(in, part, depth);
    about(Subject::kEntry);
    if (entry_check_.hasCome(FiltersEntryPB::kPolicerFieldNumber)) {
      notePolicer(in.policer_(), Subject::kPolicer, FiltersEntryPB::kPolicerFieldNumber, part);
    }
    if (entry_check_.hasCome(FiltersEntryPB::kPolicerParentFieldNumber)) {
      notePolicer(in.policer_parent_(), Subject::kParent, FiltersEntryPB::kPolicerParentFieldNumber,
                  part);
    }
    if (!entry_check_.isBroken()) noteCounters(entry, part);
  }
  if (entries_ != nullptr && !thrown) entries_->push_back(std::move(entry));
  about(Subject::kEntry);
  if (!refusal.empty()) {
    noteRefusal(refusal, part);
  } else if (group != nullptr && !thrown) {
    noteHeld(in.id_(), part);
  }
  return whole;
}

bool EntryReader::readParts(const FiltersEntryPB& in, const MessagePart& part, int depth) {
  if (!matches_.empty()) blanks_ = FiltersEntry();
  for (KeptByCode* kept : {&matches_, &actions_, &counters_}) kept->clear();
  parts_ascend_ = true;
  const auto visit = [&](const MessageCheck::Field& field, const MessagePart& inner) {
    const auto index = static_cast<int>(inner.index);
    bool whole = true;
    // If the bytes break off, the runtime may have kept fewer elements.
    if (field.number() == FiltersEntryPB::kMatchesFieldNumber && index < in.matches__size()) {
      whole = readMatch(in.matches_(index), inner, depth - 1);
    }
    if (field.number() == FiltersEntryPB::kActionsFieldNumber && index < in.actions__size()) {
      whole = readAction(in.actions_(index), inner, depth - 1);
    }
    if (field.number() == FiltersEntryPB::kCountersFieldNumber && index < in.counters__size()) {
      whole = readCounter(in.counters_(index), inner, depth - 1);
    }
    about(Subject::kEntry);
    return whole;
  };
  about(Subject::kEntry);
  return entry_check_.walk(bytes_, part, depth, lenient_, findings_, visit);
}

bool EntryReader::readMatch(const MatchPB& in, const MessagePart& part, int depth) {
  const auto code = static_cast<filtersMatch_t>(in.type_());
  const MatchRow* row = rowOf(code);
  about(Subject::kMatch, in.type_());
  const bool refused =
      row != nullptr && matches_.count(in.type_()) == 0 && !row->putBlank(&blanks_);
  if (row == nullptr || refused) {
    if (!match_check_.walk(bytes_, part, depth, lenient_, findings_)) return false;
    if (row == nullptr) {
      findings_->add(Code::kMatchUnknown, part, "no class has this code; the match is dropped");
    } else if (Finding* finding = findings_->add(Code::kMatchRefused, part)) {
      for (const Finding& conflict : explainMatch(blanks_, code).findings) {
        finding->others.insert(finding->others.end(), conflict.others.begin(),
                               conflict.others.end());
      }
      std::string held;
      for (const std::uint32_t other : finding->others) {
        held += (held.empty() ? "" : " and ") + nameOrNumber(static_cast<filtersMatch_t>(other));
      }
      finding->message = "it cannot stand beside " + held +
                         ", which came first, and is dropped: the entry takes more packets";
    }
    return true;
  }
  match_out_->Clear();
  row->echo(in, match_out_);
  const std::string_view body = part.content(bytes_);
  if (writtenBy(*match_out_, &scratch_) != body) {
    if (!match_check_.walk(bytes_, part, depth, lenient_, findings_)) return false;
    match_check_.compare(in, *match_out_, part, findings_, [row](const auto& one, auto* kept) {
      row->echo(static_cast<const MatchPB&>(one), static_cast<MatchPB*>(kept));
    });
  }
  keep(Code::kMatchReplaced, &matches_, part);
  return true;
}

bool EntryReader::readAction(const ActionPB& in, const MessagePart& part, int depth) {
  const ActionRow* row = rowOf(static_cast<filtersAction_t>(in.type_()));
  about(Subject::kAction, in.type_());
  if (row == nullptr) {
    if (!action_check_.walk(bytes_, part, depth, lenient_, findings_)) return false;
    findings_->add(Code::kActionUnknown, part, "no class has this code; the action is dropped");
    return true;
  }
  const MessageCheck::Echo echo = [row](const auto& one, auto* kept) {
    row->echo(static_cast<const ActionPB&>(one), static_cast<ActionPB*>(kept));
  };
  std::string refusal;
  action_out_->Clear();
  try {
    row->echo(in, action_out_);
  } catch (const std::invalid_argument& thrown) {
    refusal = thrown.what();
  }
  bool whole = true;
  const std::string_view body = part.content(bytes_);
  if (!refusal.empty()) {
    threw_ = true;
    whole = action_check_.walk(bytes_, part, depth, lenient_, findings_);
    if (Finding* finding = findings_->add(Code::kRebuildThrows, part)) {
      const std::string missing = missingIn(in);
      finding->message = (missing.empty() ? refusal : "it has no " + missing) +
                         ", so neither its entry nor its group can be made";
    }
  } else if (writtenBy(*action_out_, &scratch_) != body) {
    whole = action_check_.walk(bytes_, part, depth, lenient_, findings_);
    if (whole) action_check_.compare(in, *action_out_, part, findings_, echo);
  }
  if (whole) keep(Code::kActionReplaced, &actions_, part);
  return whole;
}

bool EntryReader::readCounter(const CounterPB& in, const MessagePart& part, int depth) {
  const Counter counter(in);
  about(Subject::kCounter, counter.GetId());
  counter_out_->Clear();
  counter.Serialize(counter_out_);
  const std::string_view body = part.content(bytes_);
  if (writtenBy(*counter_out_, &scratch_) != body) {
    if (!counter_check_.walk(bytes_, part, depth, lenient_, findings_)) return false;
    counter_check_.compare(in, *counter_out_, part, findings_);
  }
  keep(Code::kCounterReplaced, &counters_, part);
  return true;
}

// Keeps the part. The new part replaces an earlier part with the same code or id.
void EntryReader::keep(Code replaced, KeptByCode* all, const MessagePart& part) {
  const std::uint32_t code = findings_->offender;
  const Kept kept = {part.index, part.bytes};
  const auto [it, isNew] = all->try_emplace(code, kept);
  if (!isNew) {
    findings_->add(replaced, {part.outer, part.field, it->second.index, it->second.bytes},
                   "a later one takes its place: it is lost");
    it->second = kept;
  } else if (std::next(it) != all->end() && std::exchange(parts_ascend_, false)) {
    noteOrder(std::next(it)->first, part);
  }
}

// `next` is the code or id of the part that follows this one when the entry is written again.
void EntryReader::noteOrder(std::uint32_t next, const MessagePart& part) {
  if (Finding* finding = findings_->add(Code::kOrderDiffers, part)) {
    finding->message = "written again, it stands before " + partText(findings_->subject, next);
  }
}

void EntryReader::notePolicer(const std::string& in, Subject subject, int field,
                              const MessagePart& part) {
  const std::string out = policer::Policer(in).Serialize();
  if (in == out) return;
  about(subject);
  Finding* finding = findings_->add(Code::kPolicerRewritten, entry_check_.partOf(field, part));
  if (finding == nullptr) return;
  finding->before = shownBytes(in);
  finding->after = shownBytes(out);
  if (out != policer::Policer().Serialize()) {
    finding->message = "it is read, but the policer library writes it in other bytes";
    return;
  }
  finding->message = in.empty() ? "it has no bytes: the default one is taken, which "
                                : "it is read as the default one, which ";
  if (subject == Subject::kPolicer) finding->message += "every stage admits and which ";
  finding->message += "polices nothing";
}

void EntryReader::noteCounters(const FiltersEntry& entry, const MessagePart& part) {
  std::map<counter_type_t, std::uint32_t> holders;
  for (const auto& [id, counter] : entry.getCounters()) {
    const counter_type_t type = counter.GetType();
    const auto [holder, isFirst] = holders.try_emplace(type, id);
    const bool isInvalid = type == FILTERS_COUNTER_TYPE_INVALID;
    if (isFirst && !isInvalid && !nameOf(type).empty()) continue;
    const auto kept = counters_.find(id);
    if (kept == counters_.end()) continue;
    about(Subject::kCounter, id);
    Finding* finding = findings_->add(Code::kCounterUnusual,
                                      {&part, "counters_", kept->second.index, kept->second.bytes});
    if (finding == nullptr) continue;
    finding->message = isInvalid ? "its type says that it counts nothing"
                       : isFirst ? "its type " + std::to_string(type) + " has no name"
                                 : "another counter has its type";
    if (!isFirst) finding->others = {holder->second};
  }
}

void EntryReader::noteRefusal(const Report& refusal, const MessagePart& part) {
  const Finding& first = refusal.findings.front();
  if (Finding* finding = findings_->add(Code::kEntryRefused, part)) {
    finding->result = first.result;
    finding->offender = first.offender;
    finding->admitted = first.admitted;
    finding->message = "the group refuses it, and it is dropped";
  }
  for (const Finding& reason : refusal.findings) {
    MessagePart its = part;
    const bool isMatch = reason.subject == Subject::kMatch;
    if (isMatch || reason.subject == Subject::kAction) {
      const KeptByCode& all = isMatch ? matches_ : actions_;
      const auto kept = all.find(reason.offender);
      if (kept == all.end()) continue;  // the bytes broke off inside it
      its = {&part, isMatch ? "matches_" : "actions_", kept->second.index, kept->second.bytes};
    }
    if (reason.subject == Subject::kPolicer) {
      its = entry_check_.partOf(FiltersEntryPB::kPolicerFieldNumber, part);
    }
    about(reason.subject, reason.offender);
    Finding* finding = findings_->add(reason.code, its);
    if (finding == nullptr) continue;
    finding->result = reason.result;
    finding->admitted = reason.admitted;
    finding->message = reason.message;
  }
}

void EntryReader::noteHeld(std::uint32_t id, const MessagePart& part) {
  const Kept kept = {part.index, part.bytes};
  const auto it = held_.try_emplace(held_.end(), id, kept);
  if (it->second.index != part.index) {
    findings_->add(Code::kEntryReplaced,
                   {part.outer, part.field, it->second.index, it->second.bytes},
                   "a later one of its id takes its place: it is lost");
    it->second = kept;
  } else if (std::next(it) != held_.end() && std::exchange(entries_ascend_, false)) {
    noteOrder(std::next(it)->first, part);
  }
}

}  // namespace FiltersInspect
