#include "entry_reader.h"

#include <iterator>
#include <stdexcept>
#include <utility>

#include <filter_inspect/filter_explain.h>
#include <filter_inspect/filter_names.h>

#include "catalogue/class_rows.h"

namespace FiltersInspect {

using namespace FiltersCommon;

namespace {

template <class Message>
std::string_view writtenBy(const Message& message, std::string* scratch) {
  scratch->clear();
  static_cast<void>(message.AppendPartialToString(scratch));
  return *scratch;
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

bool Entries::read(const FiltersEntryPB& in, const Place& place, int depth,
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
  const std::string_view body = place.content(bytes_);
  bool whole = true;
  if (thrown || !refusal.empty() || !isUsual(entry.getCounters()) ||
      out_->ByteSizeLong() != body.size() || writtenBy(*out_, &scratch_) != body) {
    whole = readParts(in, place, depth);
    about(Subject::kEntry);
    if (entryCheck_.hasCome(FiltersEntryPB::kPolicerFieldNumber)) {
      notePolicer(in.policer_(), Subject::kPolicer, FiltersEntryPB::kPolicerFieldNumber, place);
    }
    if (entryCheck_.hasCome(FiltersEntryPB::kPolicerParentFieldNumber)) {
      notePolicer(in.policer_parent_(), Subject::kParent, FiltersEntryPB::kPolicerParentFieldNumber,
                  place);
    }
    if (!entryCheck_.isBroken()) noteCounters(entry, place);
  }
  about(Subject::kEntry);
  if (!refusal.empty()) {
    noteRefusal(refusal, place);
  } else if (group != nullptr && !thrown) {
    noteHeld(in.id_(), place);
  }
  return whole;
}

bool Entries::readParts(const FiltersEntryPB& in, const Place& place, int depth) {
  if (!matches_.empty()) blanks_ = FiltersEntry();
  for (KeptByCode* kept : {&matches_, &actions_, &counters_}) kept->clear();
  partsAscend_ = true;
  const auto visit = [&](const MessageCheck::Field& field, const Place& part) {
    const auto index = static_cast<int>(part.index);
    bool whole = true;
    // Of bytes that end midway, the runtime may have kept less.
    if (field.number() == FiltersEntryPB::kMatchesFieldNumber && index < in.matches__size()) {
      whole = readMatch(in.matches_(index), part, depth - 1);
    }
    if (field.number() == FiltersEntryPB::kActionsFieldNumber && index < in.actions__size()) {
      whole = readAction(in.actions_(index), part, depth - 1);
    }
    if (field.number() == FiltersEntryPB::kCountersFieldNumber && index < in.counters__size()) {
      whole = readCounter(in.counters_(index), part, depth - 1);
    }
    about(Subject::kEntry);
    return whole;
  };
  about(Subject::kEntry);
  return entryCheck_.walk(bytes_, place, depth, lenient_, findings_, visit);
}

bool Entries::readMatch(const MatchPB& in, const Place& place, int depth) {
  const auto code = static_cast<filtersMatch_t>(in.type_());
  const MatchRow* row = rowOf(code);
  about(Subject::kMatch, in.type_());
  const bool refused =
      row != nullptr && matches_.count(in.type_()) == 0 && !row->putBlank(&blanks_);
  if (row == nullptr || refused) {
    if (!matchCheck_.walk(bytes_, place, depth, lenient_, findings_)) return false;
    if (row == nullptr) {
      findings_->add(Code::kMatchUnknown, place, "no class has this code; the match is dropped");
    } else if (Finding* finding = findings_->add(Code::kMatchRefused, place)) {
      finding->message = "it cannot stand beside an earlier match, and is dropped";
      for (const Finding& conflict : explainMatch(blanks_, code).findings) {
        finding->others.insert(finding->others.end(), conflict.others.begin(),
                               conflict.others.end());
      }
    }
    return true;
  }
  matchOut_->Clear();
  row->echo(in, matchOut_);
  const std::string_view body = place.content(bytes_);
  if (writtenBy(*matchOut_, &scratch_) != body) {
    if (!matchCheck_.walk(bytes_, place, depth, lenient_, findings_)) return false;
    matchCheck_.compare(in, *matchOut_, place, findings_, [row](const auto& one, auto* kept) {
      row->echo(static_cast<const MatchPB&>(one), static_cast<MatchPB*>(kept));
    });
  }
  keep(Code::kMatchReplaced, &matches_, place);
  return true;
}

bool Entries::readAction(const ActionPB& in, const Place& place, int depth) {
  const ActionRow* row = rowOf(static_cast<filtersAction_t>(in.type_()));
  about(Subject::kAction, in.type_());
  if (row == nullptr) {
    if (!actionCheck_.walk(bytes_, place, depth, lenient_, findings_)) return false;
    findings_->add(Code::kActionUnknown, place, "no class has this code; the action is dropped");
    return true;
  }
  const MessageCheck::Echo echo = [row](const auto& one, auto* kept) {
    row->echo(static_cast<const ActionPB&>(one), static_cast<ActionPB*>(kept));
  };
  std::string refusal;
  actionOut_->Clear();
  try {
    row->echo(in, actionOut_);
  } catch (const std::invalid_argument& thrown) {
    refusal = thrown.what();
  }
  bool whole = true;
  const std::string_view body = place.content(bytes_);
  if (!refusal.empty()) {
    threw_ = true;
    whole = actionCheck_.walk(bytes_, place, depth, lenient_, findings_);
    if (Finding* finding = findings_->add(Code::kRebuildThrows, place)) finding->message = refusal;
  } else if (writtenBy(*actionOut_, &scratch_) != body) {
    whole = actionCheck_.walk(bytes_, place, depth, lenient_, findings_);
    if (whole) actionCheck_.compare(in, *actionOut_, place, findings_, echo);
  }
  if (whole) keep(Code::kActionReplaced, &actions_, place);
  return whole;
}

bool Entries::readCounter(const CounterPB& in, const Place& place, int depth) {
  const Counter counter(in);
  about(Subject::kCounter, counter.GetId());
  counterOut_->Clear();
  counter.Serialize(counterOut_);
  const std::string_view body = place.content(bytes_);
  if (writtenBy(*counterOut_, &scratch_) != body) {
    if (!counterCheck_.walk(bytes_, place, depth, lenient_, findings_)) return false;
    counterCheck_.compare(in, *counterOut_, place, findings_);
  }
  keep(Code::kCounterReplaced, &counters_, place);
  return true;
}

// The part is kept, in place of an earlier one of its code or id.
void Entries::keep(Code replaced, KeptByCode* all, const Place& place) {
  const std::uint32_t code = findings_->offender;
  const Kept kept = {place.index, place.bytes};
  const auto [it, isNew] = all->try_emplace(code, kept);
  if (!isNew) {
    findings_->add(replaced, {place.outer, place.field, it->second.index, it->second.bytes},
                   "a later one takes its place: it is lost");
    it->second = kept;
  } else if (std::next(it) != all->end() && std::exchange(partsAscend_, false)) {
    findings_->add(Code::kOrderDiffers, place, "it is written before the one in front of it");
  }
}

void Entries::notePolicer(const std::string& in, Subject subject, int field, const Place& place) {
  const std::string out = policer::Policer(in).Serialize();
  if (in == out) return;
  const bool isDefault = out == policer::Policer().Serialize();
  about(subject);
  Finding* finding = findings_->add(Code::kPolicerRewritten, entryCheck_.placeOf(field, place));
  if (finding == nullptr) return;
  finding->before = hexOf(in);
  finding->after = hexOf(out);
  finding->message = isDefault ? "it is read as the default policer, which every stage admits"
                               : "the policer library writes other bytes of it";
}

void Entries::noteCounters(const FiltersEntry& entry, const Place& place) {
  std::map<counter_type_t, std::uint32_t> holders;
  for (const auto& [id, counter] : entry.getCounters()) {
    const counter_type_t type = counter.GetType();
    const auto [holder, isFirst] = holders.try_emplace(type, id);
    const bool isInvalid = type == FILTERS_COUNTER_TYPE_INVALID;
    if (isFirst && !isInvalid && !nameOf(type).empty()) continue;
    const auto kept = counters_.find(id);
    if (kept == counters_.end()) continue;
    about(Subject::kCounter, id);
    Finding* finding = findings_->add(
        Code::kCounterUnusual, {&place, "counters_", kept->second.index, kept->second.bytes});
    if (finding == nullptr) continue;
    finding->message = isInvalid ? "its type says that it counts nothing"
                       : isFirst ? "its type " + std::to_string(type) + " has no name"
                                 : "another counter has its type";
    if (!isFirst) finding->others = {holder->second};
  }
}

void Entries::noteRefusal(const Report& refusal, const Place& place) {
  const Finding& first = refusal.findings.front();
  if (Finding* finding = findings_->add(Code::kEntryRefused, place)) {
    finding->result = first.result;
    finding->offender = first.offender;
    finding->admitted = first.admitted;
    finding->message = "the group refuses it, and it is dropped";
  }
  for (const Finding& reason : refusal.findings) {
    Place its = place;
    const bool isMatch = reason.subject == Subject::kMatch;
    if (isMatch || reason.subject == Subject::kAction) {
      const KeptByCode& parts = isMatch ? matches_ : actions_;
      const auto part = parts.find(reason.offender);
      if (part == parts.end()) continue;  // the half that broken bytes end in
      its = {&place, isMatch ? "matches_" : "actions_", part->second.index, part->second.bytes};
    }
    if (reason.subject == Subject::kPolicer) {
      its = entryCheck_.placeOf(FiltersEntryPB::kPolicerFieldNumber, place);
    }
    about(reason.subject, reason.offender);
    Finding* finding = findings_->add(reason.code, its);
    if (finding == nullptr) continue;
    finding->result = reason.result;
    finding->admitted = reason.admitted;
    finding->message = reason.message;
  }
}

void Entries::noteHeld(std::uint32_t id, const Place& place) {
  const Kept kept = {place.index, place.bytes};
  const auto it = held_.try_emplace(held_.end(), id, kept);
  if (it->second.index != place.index) {
    findings_->add(Code::kEntryReplaced,
                   {place.outer, place.field, it->second.index, it->second.bytes},
                   "a later one of its id takes its place: it is lost");
    it->second = kept;
  } else if (std::next(it) != held_.end() && std::exchange(entriesAscend_, false)) {
    findings_->add(Code::kOrderDiffers, place, "it is written before the one in front of it");
  }
}

}  // namespace FiltersInspect
