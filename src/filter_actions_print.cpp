#include <filter_common/filter_actions.h>

#include <netinet/ether.h>

#include <cstdint>
#include <ostream>

#include "action_visit.h"
#include "print.h"

// The printers are at global scope, so this file does not open the namespace.
using namespace FiltersCommon;

namespace {

// Prints the lines that begin every block.
std::ostream& printHead(std::ostream& os, const char* header, const Action& action) {
  return os << header << std::endl << "      Action Type ID: " << action.getType() << std::endl;
}

std::ostream& printNone(std::ostream& os, const char* header, const Action& action) {
  return printHead(os, header, action) << "      <no parameters>\n" << std::flush;
}

// Prints a block with one value after its label.
template <class Value>
std::ostream& printOne(std::ostream& os, const char* header, const Action& action,
                       const char* label, const Value& value) {
  return printHead(os, header, action) << label << value << std::endl;
}

std::ostream& printMac(std::ostream& os, const char* header, const Action& action,
                       const ether_addr& mac) {
  char buffer[] = "00:00:00:00:00:00";
  const char* text = ether_ntoa_r(&mac, buffer);
  printOne(os, header, action, "      Replace MAC: ", text == nullptr ? "" : text);
  // The stream is marked as failed only after the line end, because a failed stream prints nothing
  // more.
  if (text == nullptr) os.setstate(std::ios_base::badbit);
  return os;
}

void printCancelType(std::ostream& os, cp2cpuCancelParam_t type) {
  switch (type) {
    case COPY_TO_CPU_CANCEL:
      os << "COPY_TO_CPU_CANCEL";
      return;
    case SWITCH_TO_CPU_CANCEL:
      os << "SWITCH_TO_CPU_CANCEL";
      return;
  }
  os << static_cast<std::uint32_t>(type);
}

}  // namespace

std::ostream& operator<<(std::ostream& os, const Action& action) {
  return visitAction<std::ostream&>(action.getType(), os, [&](auto tag) -> std::ostream& {
    using T = typename decltype(tag)::Class;
    return os << static_cast<const T&>(action);
  });
}

// Prints only the list. The derived class prints the first lines of the block.
std::ostream& operator<<(std::ostream& os, const ActionPorts& action) {
  os << "      Number of ports: " << action.ports_.size() << std::endl << "      LIMIDs: ";
  for (limid_t port : action.ports_) os << '"' << InterfaceName<100>(port).text << "\" ";
  return os << std::endl;
}

std::ostream& operator<<(std::ostream& os, const ActionBlockEgressPorts& action) {
  return printHead(os, "    =ActionBlockEgressPorts=", action)
         << static_cast<const ActionPorts&>(action);
}

std::ostream& operator<<(std::ostream& os, const ActionCopyToCpuCancel& action) {
  printHead(os, "    =ActionCopyToCpuCancel=", action) << "      Cp2CPU Cancel type: ";
  printCancelType(os, action.getCancelType());
  return os << std::endl;
}

// Deliberate: the indent is repeated before every port, and all ports are on one line, unlike the
// list of blocked ports.
std::ostream& operator<<(std::ostream& os, const ActionRedirect& action) {
  printHead(os, "    =ActionRedirect=", action);
  for (limid_t port : action.getRedirectPortsRef()) {
    os << "      \"" << InterfaceName<100>(port).text << "\" ";
  }
  return os << std::endl;
}

std::ostream& operator<<(std::ostream& os, const ActionMplsPortSet& action) {
  return printHead(os, "    =ActionMplsPortSet=", action)
         << "      VPN ID: " << InterfaceName<64>(action.getVpnId()).text << std::endl
         << "      MPLS Access Port: " << InterfaceName<64>(action.getMplsAccessPort()).text
         << std::endl;
}

std::ostream& operator<<(std::ostream& os, const ActionPermit& action) {
  return printNone(os, "    =ActionPermit=", action);
}

std::ostream& operator<<(std::ostream& os, const ActionDeny& action) {
  return printNone(os, "    =ActionDeny=", action);
}

std::ostream& operator<<(std::ostream& os, const ActionCopyToCpu& action) {
  return printNone(os, "    =ActionCopyToCpu=", action);
}

std::ostream& operator<<(std::ostream& os, const ActionRedirectCancel& action) {
  return printNone(os, "    =ActionRedirectCancel=", action);
}

std::ostream& operator<<(std::ostream& os, const ActionBlackHole& action) {
  return printNone(os, "    =ActionBlackHole=", action);
}

std::ostream& operator<<(std::ostream& os, const ActionCopyInnerPcp& action) {
  return printNone(os, "    =ActionCopyInnerPcp=", action);
}

std::ostream& operator<<(std::ostream& os, const ActionL2ToCpuDrop& action) {
  return printNone(os, "    =ActionL2ToCpuDrop=", action);
}

std::ostream& operator<<(std::ostream& os, const ActionSetPcp& action) {
  return printOne(os, "    =ActionSetPcp=", action, "      PCP: ", +action.getPcp());
}

std::ostream& operator<<(std::ostream& os, const ActionSetPcpAndQueue& action) {
  return printOne(os, "    =ActionSetPcpAndQueue=", action,
                  "      PCP_AND_QUEUE: ", +action.getPcpAndQueue());
}

std::ostream& operator<<(std::ostream& os, const ActionSetInnerPcp& action) {
  return printOne(os, "    =ActionSetInnerPcp=", action,
                  "      Inner PCP: ", +action.getInnerPcp());
}

std::ostream& operator<<(std::ostream& os, const ActionSetDSCP& action) {
  return printOne(os, "    =ActionSetDSCP=", action, "      DSCP: ", +action.getDSCP());
}

std::ostream& operator<<(std::ostream& os, const ActionMapToCosQueue& action) {
  return printOne(os, "    =ActionMapToCosQueue=", action,
                  "      CoS Queue: ", +action.getCosQueue());
}

std::ostream& operator<<(std::ostream& os, const ActionMapToCpuCosQueue& action) {
  return printOne(os, "    =ActionMapToCpuCosQueue=", action,
                  "      CPU CoS Queue: ", +action.getCpuCosQueue());
}

std::ostream& operator<<(std::ostream& os, const ActionL3Switch& action) {
  return printOne(os, "    =ActionL3Switch=", action,
                  "      L3 Destination ID: ", action.getL3DestinationId());
}

std::ostream& operator<<(std::ostream& os, const ActionReplaceDstMac& action) {
  return printMac(os, "    =ActionReplaceDstMac=", action, action.getReplaceDstMac());
}

std::ostream& operator<<(std::ostream& os, const ActionReplaceSrcMac& action) {
  return printMac(os, "    =ActionReplaceSrcMac=", action, action.getReplaceSrcMac());
}
