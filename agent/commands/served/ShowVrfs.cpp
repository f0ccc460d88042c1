#include "agent/commands/served/ShowVrfs.h"

#include <optional>
#include <vector>

#include "agent/language/PrintableText.h"
#include "agent/language/TextTable.h"
#include "agent/model/forwarding/FallbackGraph.h"

namespace ZelAgent {
namespace {

using Routing::Hardware::PrefixLensInExactMatch;
using Routing::Hardware::RouteStatusBase;
using Lengths = std::vector<unsigned>;

struct VrfRow {
  L3::VrfName name;
  std::optional<std::uint32_t> id;  // none where the hardware does not know the VRF
  L3::VrfName fallback;
  std::optional<Lengths> lengthsV4;  // none where the hardware has told none
  std::optional<Lengths> lengthsV6;
  bool isConfigured = false;
};

std::optional<Lengths> lengthsOf(const RouteStatusBase& routes, const L3::VrfName& vrf) {
  const auto present = routes.vrfPrefixLensInExactMatch(vrf.str());
  if (!present) return std::nullopt;
  Lengths lengths;
  for (unsigned length = 0; length <= PrefixLensInExactMatch::longest; ++length) {
    if (present->prefixLenHas(static_cast<unsigned char>(length))) lengths.push_back(length);
  }
  return lengths;
}

std::vector<VrfRow> rowsOf(ForwardingAgent& agent) {
  const std::set<L3::VrfName> configured = configuredVrfs(agent);
  std::vector<VrfRow> rows;
  for (const L3::VrfName& name : knownVrfs(agent)) {
    VrfRow row;
    row.name = name;
    if (const auto status = agent.routeStatus().vrfStatus(name)) row.id = status->vrfId();
    row.fallback = agent.fallbackConfig().fallbackVrf(name);
    row.lengthsV4 = lengthsOf(agent.routeStatus(), name);
    row.lengthsV6 = lengthsOf(agent.routeStatusV6(), name);
    row.isConfigured = configured.contains(name);
    rows.push_back(std::move(row));
  }
  return rows;
}

std::string toText(const std::optional<Lengths>& lengths) {
  if (!lengths) return "-";
  if (lengths->empty()) return "none";
  std::vector<std::string> texts;
  for (const unsigned length : *lengths)
    texts.push_back(std::to_string(length));
  return joined(texts, ",");
}

void writeRows(std::ostream& out, const std::vector<VrfRow>& rows) {
  TextTable table{{"VRF", "ID", "FALLBACK", "IPV4-LENS", "IPV6-LENS", "CONFIGURED"}};
  for (const VrfRow& row : rows) {
    table.push_back({orDash(row.name.bytes()), row.id ? std::to_string(*row.id) : "-",
                     orDash(row.fallback.bytes()), toText(row.lengthsV4), toText(row.lengthsV6),
                     row.isConfigured ? "yes" : "no"});
  }
  writeTable(out, table);
}

template <class Value>
OrderedJson orNull(const std::optional<Value>& value) {
  return value ? OrderedJson(*value) : OrderedJson();
}

OrderedJson rowsJson(const std::vector<VrfRow>& rows) {
  OrderedJson json = OrderedJson::array();
  for (const VrfRow& row : rows) {
    json.push_back({{"vrfName", row.name.str()},
                    {"vrfId", orNull(row.id)},
                    {"fallbackVrfName", row.fallback.str()},
                    {"exactMatchLens", orNull(row.lengthsV4)},
                    {"exactMatchLensV6", orNull(row.lengthsV6)},
                    {"configured", row.isConfigured}});
  }
  return json;
}

}  // namespace

CommandOutput showVrfs(const CommandCall& call) {
  const std::vector<VrfRow> rows = rowsOf(call.served.agent());
  return outputOf(
      call, [&](std::ostream& out) { writeRows(out, rows); }, [&] { return rowsJson(rows); });
}

}  // namespace ZelAgent
