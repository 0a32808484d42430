#include "unusual.h"

#include <filter_common/filter_entries.pb.h>

#include <algorithm>
#include <initializer_list>
#include <utility>

#include "forms/policer_facts.h"
#include "masked.h"
#include "packet_shapes.h"
#include "readings.h"
#include "shared/arena.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

// --- Tables of values ----------------------------------------------------------------------------

// The headers of IPv6 in IANA's registry: hop-by-hop options, routing, fragment, ICMP, no next
// header, and destination options.
constexpr std::uint32_t kOfIPv6[] = {0, 43, 44, 58, 59, 60};
constexpr std::uint32_t kTcp = 6;
constexpr std::uint32_t kReservedVlan = 4095;  // IEEE 802.1Q; 0 is for frames that carry only a PCP

// Numbers that senders hardly ever mean. A rule that denies packets with such a number can be
// usual.
struct OddNumber {
  filtersMatch_t code;
  bool even_if_denied;
  std::uint32_t first, last;
  const char* why;
};
constexpr OddNumber kOddNumbers[] = {
    {FILTERS_MATCH_TTL, false, 0, 0,
     "no such packet is passed on (RFC 1812); write 1 for packets that end here, or deny it"},
    {FILTERS_MATCH_IP_PROTOCOL, false, 255, 255,
     "it is reserved (IANA); leave the match out if every protocol was meant, or deny it"},
    {FILTERS_MATCH_IP_PROTOCOL, false, 148, 252,
     "it is assigned to no protocol (IANA); write a port beside ip_protocol=6 or 17 if one was "
     "meant, or deny it"},
    {FILTERS_MATCH_IP_PROTOCOL, false, 80, 80,
     "it is a protocol of the past; write dst_l4_port=80/0xffff ip_protocol=6 if HTTP was meant"},
    {FILTERS_MATCH_IP_PROTOCOL, false, 22, 22,
     "it is a protocol of the past; write dst_l4_port=22/0xffff ip_protocol=6 if SSH was meant"},
    {FILTERS_MATCH_IP_PROTOCOL, false, 53, 53,
     "it is a protocol of the past; write dst_l4_port=53/0xffff ip_protocol=17 if DNS was meant"},
    {FILTERS_MATCH_TPID, true, 0, 0x5ff,
     "it is a length and no EtherType (IEEE 802.3); write 0x8100 or 0x88a8"},
    {FILTERS_MATCH_TPID, true, 0x800, 0x800,
     "it is the EtherType of IPv4, which begins no tag; write 0x8100 or 0x88a8"},
    {FILTERS_MATCH_TPID, true, 0x806, 0x806,
     "it is the EtherType of ARP, which begins no tag; write 0x8100 or 0x88a8"},
    {FILTERS_MATCH_TPID, true, 0x86dd, 0x86dd,
     "it is the EtherType of IPv6, which begins no tag; write 0x8100 or 0x88a8"},
    {FILTERS_MATCH_TPID, true, 8100, 8100, "it is 8100 in decimal; write 0x8100"},
    {FILTERS_MATCH_TPID, true, 9100, 9100, "it is 9100 in decimal; write 0x9100"},
};

// Addresses and ports that cannot be a source, or cannot be a destination. A row stands for all
// addresses whose first `length` bits are those of the byte `first`, followed by zeros.
struct NoAddress {
  filtersMatch_t code;
  bool even_if_denied;
  unsigned char first;
  unsigned length;
  const char* why;
};
constexpr const char* kPortZero =
    "port 0 is reserved (IANA); leave the match out if every port was meant, or deny it";
constexpr NoAddress kNoAddresses[] = {
    {FILTERS_MATCH_SRC_IPV4, false, 224, 4,
     "a multicast address is no source (RFC 1112); write it as dst_ipv4, or deny it"},
    {FILTERS_MATCH_SRC_IPV4, false, 240, 4,
     "it is reserved or for broadcasts, and no source (RFC 1112); write another, or deny it"},
    {FILTERS_MATCH_SRC_IPV4, false, 127, 8,
     "a loopback address is no source on a wire (RFC 1122); write another, or deny it"},
    {FILTERS_MATCH_DST_IPV4, true, 0, 32,
     "it is no destination (RFC 1122); write 0.0.0.0/0 if every address was meant"},
    {FILTERS_MATCH_DST_IPV6, true, 0, 128,
     "it is no destination (RFC 4291); write ::/0 if every address was meant"},
    {FILTERS_MATCH_SRC_MAC, false, 0, 48,
     "it is no source; leave the match out if every address was meant, or deny it"},
    {FILTERS_MATCH_DST_MAC, false, 0, 48,
     "it is no destination; leave the match out if every address was meant, or deny it"},
    {FILTERS_MATCH_DST_L4_PORT, false, 0, 16, kPortZero},
    {FILTERS_MATCH_SRC_L4_PORT, false, 0, 16, kPortZero},
};

// Actions whose number has a smaller limit than its field can hold.
struct FewNumbers {
  filtersAction_t code;
  std::uint32_t most;
  const char* why;
};
constexpr const char* kEightPriorities = "there are eight priorities (IEEE 802.1Q); write 0 to 7";
constexpr const char* kEightQueues =
    "there are eight classes of service (IEEE 802.1Q); write 0 to 7, unless the device has a queue "
    "of this number";
constexpr FewNumbers kFewNumbers[] = {
    {FILTERS_ACTION_SET_PCP, 7, kEightPriorities},
    {FILTERS_ACTION_SET_PCP_AND_QUEUE, 7, kEightPriorities},
    {FILTERS_ACTION_SET_INNER_PCP, 7, kEightPriorities},
    {FILTERS_ACTION_SET_DSCP, 63, "a DSCP has six bits (RFC 2474); write 0 to 63"},
    {FILTERS_ACTION_MAP_TO_COS_QUEUE, 7, kEightQueues},
    {FILTERS_ACTION_MAP_TO_CPU_COS_QUEUE, 7, kEightQueues},
};

// Pairs of actions in which one action cancels the effect of the other.
constexpr std::pair<filtersAction_t, filtersAction_t> kContradictions[] = {
    {FILTERS_ACTION_PERMIT, FILTERS_ACTION_DENY},
    {FILTERS_ACTION_PERMIT, FILTERS_ACTION_BLACK_HOLE},
    {FILTERS_ACTION_COPY_TO_CPU, FILTERS_ACTION_COPY_TO_CPU_CANCEL},
    {FILTERS_ACTION_REDIRECT, FILTERS_ACTION_REDIRECT_CANCEL},
    {FILTERS_ACTION_SET_INNER_PCP, FILTERS_ACTION_COPY_INNER_PCP},
};

// --- Reporting odd values ------------------------------------------------------------------------

class Oddities {
 public:
  Oddities(const FiltersEntry& entry, EntryFindings* findings)
      : message_(*arena_.make<FiltersEntryPB>()), findings_(*findings) {
    entry.convertToFiltersEntryPB(&message_);
    for (const ActionPB& action : message_.actions_()) actions_ |= 1u << action.type_();
    const bool drops = has(FILTERS_ACTION_DENY) || has(FILTERS_ACTION_BLACK_HOLE);
    permits_ = has(FILTERS_ACTION_PERMIT) && !drops;
    only_drops_ = drops && !has(FILTERS_ACTION_PERMIT) && !has(FILTERS_ACTION_COPY_TO_CPU);
  }

  void addAll() {
    for (const MatchPB& match : message_.matches_()) {
      const MatchForm* row = formOf(static_cast<filtersMatch_t>(match.type_()));
      if (row != nullptr) addMatch(match, *row);
    }
    addTogether();
    for (const ActionPB& action : message_.actions_()) {
      const FormRow* row = formOf(static_cast<filtersAction_t>(action.type_()));
      if (row != nullptr) addAction(action, *row);
    }
    addContradictions();
    const bool isPoliced =
        message_.policer_() != defaultPolicer() || message_.has_policer_parent_();
    if (message_.actions_().empty() && !isPoliced) {
      add(Subject::kEntry, 0,
          "it has no action, and what becomes of its packets is the device's choice; write permit "
          "or deny");
    }
  }
 private:
  bool has(filtersAction_t code) const { return (actions_ >> code & 1) != 0; }
  const MatchPB* held(filtersMatch_t code) const {
    for (const MatchPB& match : message_.matches_()) {
      if (match.type_() == static_cast<std::uint32_t>(code)) return &match;
    }
    return nullptr;
  }
  // The number in a match that holds exactly one number.
  std::optional<std::uint32_t> numberOf(filtersMatch_t code) const {
    const MatchPB* match = held(code);
    if (match == nullptr) return std::nullopt;
    return numberIn(*match, formOf(code)->fields[0]);
  }

  void add(Subject subject, std::uint32_t offender, std::string message,
           std::vector<std::uint32_t> others = {}) {
    Finding* finding = findings_.add(Code::kValueUnusual, message_.id_());
    if (finding == nullptr) return;
    finding->subject = subject;
    finding->offender = offender;
    finding->others = std::move(others);
    finding->message = std::move(message);
  }
  // Reports the reason why a value is odd. The finding's message begins with the value as the text
  // form writes it.
  void add(const MatchPB& match, const std::string& why, std::vector<std::uint32_t> others = {}) {
    add(Subject::kMatch, match.type_(),
        quoted(valueText(*formOf(static_cast<filtersMatch_t>(match.type_())), match)) + why,
        std::move(others));
  }
  void add(const ActionPB& action, const std::string& why) {
    const FormRow& row = *formOf(static_cast<filtersAction_t>(action.type_()));
    add(Subject::kAction, action.type_(), quoted(valueText(row, action)) + why);
  }

  static std::string quoted(const std::string& text) {
    constexpr std::size_t kLongest = 60;
    return '\'' + text.substr(0, kLongest) + (text.size() > kLongest ? "...': " : "': ");
  }
  // --- One match ---

  void addMatch(const MatchPB& match, const MatchForm& row) {
    const bool isOpen = addOpen(match, row);
    if (hasMask(row) && !isOpen) addMasked(match, row);
    if (row.form == ValueForm::kNumbers) addUncarried(match, row);
    if (row.form == ValueForm::kName) addUnnamed(match, row, numberIn(match, row.fields[0]));
    if (row.form == ValueForm::kLimids && row.fields[1]) {
      for (std::uint32_t type : numbersIn(match, row.fields[1])) addUnnamed(match, row, type);
    }
    addNumber(match, row);
  }

  // Reports a mask, set or range that has several readings. Returns false if there is nothing to
  // report.
  bool addOpen(const MatchPB& match, const MatchForm& row) {
    const FieldTest test = row.packet[0].test;
    if (test != FieldTest::kTernary && test != FieldTest::kSet && test != FieldTest::kRange)
      return false;
    std::vector<Asked> asked;
    MatchNumbers ignored;
    appendAsked(match, &asked, &ignored);
    if (asked.empty() || asked[0].open == nullptr) return false;
    std::string why = asked[0].open;
    if (test == FieldTest::kRange) {
      const auto end = [&](int which) {
        return std::to_string(numberIn(match, row.fields[which]));
      };
      why += "; write " + end(1) + '-' + end(0);
    } else if (test == FieldTest::kTernary) {
      why += "; write " + maskedText(row, maskedIn(match, row).value, prefixMask(row.bits)) +
             " for that port, or leave the match out for every port";
    } else {
      why += "; write what is meant, or leave the match out";
    }
    add(match, why);
    return true;
  }

  void addMasked(const MatchPB& match, const MatchForm& row) {
    const Masked masked = maskedIn(match, row);
    const bool hasHole = masked.hasHole();
    if (masked.taken() != masked.value) {
      const unsigned length = masked.lengthForAll();
      const std::string longer = maskedText(row, masked.value, prefixMask(length));
      std::string advice = " if the mask is right";
      if (!hasHole && length == masked.bits()) {
        advice = ", or " + longer + " if that alone was meant";
      } else if (!hasHole) {
        advice = ", or a longer mask, as in " + longer + ", if that was meant";
      }
      add(match, "the bits outside of the mask do not count, and it takes " +
                     maskedText(row, masked.taken(), masked.mask) + "; write that" + advice);
    }
    if (hasHole) {
      add(match, "its mask has a hole, a 0 in front of a 1; write the mask " + masked.meantMasks() +
                     " if that was meant");
    }
    addNoAddress(match, masked);
    addNetwork(match, row, masked);
  }

  void addNoAddress(const MatchPB& match, const Masked& masked) {
    for (const NoAddress& no : kNoAddresses) {
      if (match.type_() == static_cast<std::uint32_t>(no.code) && (permits_ || no.even_if_denied) &&
          masked.isOf(no.first, no.length)) {
        add(match, no.why);
      }
    }
    const bool isGroup = (masked.value[0] & masked.mask[0] & 1) != 0;
    if (match.type_() == FILTERS_MATCH_SRC_MAC && permits_ && isGroup) {
      add(match, "a group address is no source (IEEE 802.3); write it as dst_mac, or deny it");
    }
  }

  // Reports a single address that ends in zeros, because its mask was probably forgotten. Multicast
  // addresses may end in zeros.
  void addNetwork(const MatchPB& match, const FormRow& row, const Masked& masked) {
    const bool is4 = row.form == ValueForm::kIPv4;
    if (!masked.isOne() || (!is4 && row.form != ValueForm::kIPv6)) return;
    const unsigned length = masked.lengthForAll();
    if (length == 0 || length > (is4 ? 16 : 48) || masked.value[0] >= (is4 ? 224 : 255)) return;
    add(match, "it is one address; write a mask, as in " +
                   maskedText(row, masked.value, prefixMask(length)) + ", if a network was meant");
  }

  void addUncarried(const MatchPB& match, const MatchForm& row) {
    const bool isVlan = match.type_() == FILTERS_MATCH_EXTERNAL_VLAN_ID;
    if (row.packet[0].carried == 0) return;
    const std::uint32_t most = isVlan ? kReservedVlan - 1 : (1u << row.packet[0].carried) - 1;
    for (std::uint32_t number : numbersIn(match, row.fields[0])) {
      if (number <= most) continue;
      return add(match, "no frame carries " + std::to_string(number) +
                            (isVlan && number == kReservedVlan ? ", which is reserved" : "") +
                            " (IEEE 802.1Q); write numbers of 0 to " + std::to_string(most));
    }
  }

  template <class Message>
  void addUnnamed(const Message& message, const FormRow& row, std::uint32_t value) {
    if (!row.names.nameOf(value).empty()) return;
    std::string names(row.names.nameOf(0));
    for (std::uint32_t known = 1; !row.names.nameOf(known).empty(); ++known) {
      (names += ", ") += row.names.nameOf(known);
    }
    add(message,
        "no name is known for " + std::to_string(value) + "; write one that is known: " + names);
  }

  void addNumber(const MatchPB& match, const MatchForm& row) {
    if (row.form != ValueForm::kNumber && row.form != ValueForm::kHexadecimal) return;
    const std::uint32_t number = numberIn(match, row.fields[0]);
    for (const OddNumber& odd : kOddNumbers) {
      if (match.type_() == static_cast<std::uint32_t>(odd.code) && odd.first <= number &&
          number <= odd.last && (permits_ || odd.even_if_denied)) {
        add(match, odd.why);
      }
    }
    // A byte with ECN bits and a small DSCP is probably a DSCP that was written as a whole byte.
    // Bytes below 4 are not reported, because they match only ECN.
    if (match.type_() == FILTERS_MATCH_TOS && number > 3 && number < 64 && number % 4 != 0) {
      add(match, "the whole byte is DSCP " + std::to_string(number / 4) + " and ECN " +
                     std::to_string(number % 4) + "; write tos=" + std::to_string(4 * number) +
                     " if DSCP " + std::to_string(number) + " was meant");
    }
  }

  // --- Contradictions between matches ---

  void addTogether() {
    const MatchPB* all = held(FILTERS_MATCH_ALL);
    if (all != nullptr && message_.matches__size() > 1) {
      add(Subject::kMatch, all->type_(),
          "it asks nothing beside other matches; leave it out, or the others if every packet was "
          "meant");
    }
    addProtocols();
    for (const auto& [source, destination] :
         {std::pair(FILTERS_MATCH_SRC_IPV4, FILTERS_MATCH_DST_IPV4),
          {FILTERS_MATCH_SRC_MAC, FILTERS_MATCH_DST_MAC}}) {
      addSame(source, destination);
    }
    if (numberOf(FILTERS_MATCH_VLAN_TAGGING) != std::uint32_t{FILTERS_VLAN_UNTAGGED}) return;
    for (const auto code :
         {FILTERS_MATCH_EXTERNAL_VLAN_ID, FILTERS_MATCH_TPID, FILTERS_MATCH_PCP}) {
      const MatchPB* match = held(code);
      if (match == nullptr) continue;
      add(*match,
          "untagged frames have none; write vlan_tagging=tagged, or leave one of the two out",
          {FILTERS_MATCH_VLAN_TAGGING});
    }
  }

  void addProtocols() {
    const auto protocol = numberOf(FILTERS_MATCH_IP_PROTOCOL);
    if (!protocol) return;
    for (const auto code :
         {FILTERS_MATCH_DST_L4_PORT, FILTERS_MATCH_SRC_L4_PORT, FILTERS_MATCH_DST_L4_PORT_RANGE}) {
      const MatchPB* port = held(code);
      if (port == nullptr || hasPorts(*protocol)) continue;
      add(*port,
          "packets of ip_protocol=" + std::to_string(*protocol) +
              " have no ports; write ip_protocol=6 for TCP or 17 for UDP, or leave the ports out",
          {FILTERS_MATCH_IP_PROTOCOL});
    }
    const MatchPB* source = held(FILTERS_MATCH_SRC_IPV4);
    const MatchPB* destination = held(FILTERS_MATCH_DST_IPV4);
    const MatchPB* address = destination != nullptr ? destination : source;
    const bool isOfIPv6 =
        std::find(std::begin(kOfIPv6), std::end(kOfIPv6), *protocol) != std::end(kOfIPv6);
    if (address != nullptr && isOfIPv6) {
      add(*held(FILTERS_MATCH_IP_PROTOCOL),
          "it is of IPv6, beside an IPv4 address; write another protocol, or leave the match out "
          "if "
          "every one was meant",
          {address->type_()});
    }
    if (destination == nullptr || *protocol != kTcp || !permits_) return;
    if (maskedIn(*destination, *formOf(FILTERS_MATCH_DST_IPV4)).isOf(224, 4)) {
      add(*destination,
          "TCP goes to no multicast address (RFC 9293); write the protocol that does, or another "
          "address",
          {FILTERS_MATCH_IP_PROTOCOL});
    }
  }

  void addSame(filtersMatch_t source, filtersMatch_t destination) {
    const MatchPB* const ends[] = {held(source), held(destination)};
    if (!permits_ || ends[0] == nullptr || ends[1] == nullptr) return;
    const Masked from = maskedIn(*ends[0], *formOf(source));
    const Masked to = maskedIn(*ends[1], *formOf(destination));
    if (from.value == to.value && from.isOne() && to.isOne()) {
      add(*ends[1], "source and destination are one address; write the two that were meant",
          {static_cast<std::uint32_t>(source)});
    }
  }

  // --- Actions ---

  void addAction(const ActionPB& action, const FormRow& row) {
    for (const FewNumbers& few : kFewNumbers) {
      if (action.type_() != static_cast<std::uint32_t>(few.code)) continue;
      const std::uint32_t number = numberIn(action, row.fields[0]);
      std::string why = few.why;
      if (few.code == FILTERS_ACTION_SET_DSCP) {
        why += ", " + std::to_string(number / 4) + " if this is a whole ToS byte";
      }
      if (number > few.most) add(action, why);
    }
    if (row.form == ValueForm::kName) addUnnamed(action, row, numberIn(action, row.fields[0]));
    if (row.form == ValueForm::kLimids && numbersIn(action, row.fields[0]).empty()) {
      add(action, "it names no port; write the ports, or leave the action out");
    }
    if (row.form != ValueForm::kMac) return;
    const AddressBytes address = addressIn(action, row.fields[0], row.form);
    const bool isGroup = action.type_() == FILTERS_ACTION_REPLACE_SRC_MAC && (address[0] & 1) != 0;
    if (isGroup || address == AddressBytes()) {
      add(action, std::string(isGroup ? "a group address is no source" : "it is no station's") +
                      " (IEEE 802.3); write the address of one");
    }
  }

  void addContradictions() {
    for (const auto& [one, other] : kContradictions) {
      if (has(one) && has(other) && !isSwitchCancel(other)) {
        addBeside(other, one, "and only one of the two can be done; leave the other out");
      }
    }
    if (!only_drops_) return;
    const filtersAction_t drop =
        has(FILTERS_ACTION_DENY) ? FILTERS_ACTION_DENY : FILTERS_ACTION_BLACK_HOLE;
    for (const ActionPB& action : message_.actions_()) {
      const auto code = static_cast<filtersAction_t>(action.type_());
      if (formOf(code)->effect != Effect::kUnlessDropped) continue;
      addBeside(code, drop, "and does nothing to what is dropped; leave it out");
    }
  }
  void addBeside(filtersAction_t code, filtersAction_t other, const char* why) {
    add(Subject::kAction, code, "it stands beside " + std::string(nameOf(other)) + ", " + why,
        {other});
  }
  // True if the action cancels only the switching to the CPU. The packet may then still be copied
  // there.
  bool isSwitchCancel(filtersAction_t code) const {
    const auto& actions = message_.actions_();
    return code == FILTERS_ACTION_COPY_TO_CPU_CANCEL &&
           std::any_of(actions.begin(), actions.end(), [&](const ActionPB& action) {
             return action.type_() == static_cast<std::uint32_t>(code) &&
                    numberIn(action, formOf(code)->fields[0]) != COPY_TO_CPU_CANCEL;
           });
  }

  MessageArena arena_;
  FiltersEntryPB& message_;
  EntryFindings& findings_;
  std::uint32_t actions_ = 0;  // a bit for each code
  bool permits_, only_drops_;
};

}  // namespace

void addOddities(const FiltersEntry& entry, EntryFindings* findings) {
  Oddities(entry, findings).addAll();
}

Report unusualValues(const FiltersGroup& group, std::size_t max_findings) {
  EntryFindings findings(group.getId(), max_findings);
  for (const auto& [id, entry] : group.getEntriesRef()) addOddities(entry, &findings);
  return findings.take();
}

}  // namespace FiltersInspect
