#!/bin/sh
# Shows what zel-agent does with the examples beside this script: demo.sh PATH-OF-ZEL-AGENT
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

echo "# Four rules on three interfaces need two VRF actions; then a changed version."
show run four-rules.json four-rules-changed.json
echo "# Decapsulation, with a fallback VRF and a VRF for the inner header."
show run decap.json
echo "# A chip with room for one action says what failed and why."
show run --chip-capacity 1 four-rules.json
echo "# A VRF appears late, a fallback moves, and the chip runs full and recovers."
show run --chip-capacity 2 late-vrf.json --events late-vrf.events
echo "# The way of one packet through a tunnel that ends here."
show explain decap.json --events decap.events --in Ethernet1 \
  --packet 'ipv4 192.0.2.33 to 198.51.100.7 ttl 9 carrying ipv4 10.0.0.1 to 203.0.113.9 dscp 46'
echo "# Captured packets, and where they went."
left=$(mktemp -d)
show forward decap.json --events decap.events --in Ethernet1=tunnels.pcap --out "$left"
rm -r "$left"
echo "# Who falls back to whom, and which actions name each VRF."
show fallback-graph decap.json
