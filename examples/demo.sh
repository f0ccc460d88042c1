#!/bin/sh
# Runs zel-agent on the examples in the folder of this script. usage: demo.sh PATH-OF-ZEL-AGENT
set -eu

if [ $# -ne 1 ] || [ ! -x "$1" ]; then
  echo "usage: $0 ZEL-AGENT, the built agent (for example build/release/bin/zel-agent)" >&2
  exit 2
fi
agent=$(realpath "$1")
cd "$(dirname "$0")"

show() {
  echo "\$ zel-agent $*"
  "$agent" "$@"
  echo
}

echo "# Four rules on three interfaces need two VRF actions. Then a changed version is applied."
show run four-rules.json four-rules-changed.json
echo "# Decapsulation, with a fallback VRF and a post-decapsulation VRF."
show run decap.json
echo "# A chip with one VRF resource: the table shows which action failed, and why."
show run --chip-capacity 1 four-rules.json
echo "# A VRF appears late, a fallback VRF changes, and the chip runs out of resources and recovers."
show run --chip-capacity 2 late-vrf.json --events late-vrf.events
echo "# The path of one packet whose tunnel ends at this switch."
show explain decap.json --events decap.events --in Ethernet1 \
  --packet 'ipv4 192.0.2.33 to 198.51.100.7 ttl 9 carrying ipv4 10.0.0.1 to 203.0.113.9 dscp 46'
echo "# Captured packets are forwarded and counted."
left=$(mktemp -d)
show forward decap.json --events decap.events --in Ethernet1=tunnels.pcap --out "$left"
rm -r "$left"
echo "# The fallback VRF of each VRF, and the actions that name each VRF."
show fallback-graph decap.json
