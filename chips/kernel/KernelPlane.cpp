#include "chips/kernel/KernelPlane.h"

#include <bpf/bpf.h>
#include <bpf/libbpf.h>
#include <forward.skel.h>

#include <cerrno>
#include <system_error>

namespace KernelChip {
namespace {

constexpr std::size_t headroom = 64;  // a frame can become longer by a tag

[[noreturn]] void fail(int error, const char* what) {
  throw std::system_error(error, std::generic_category(), what);
}

void sizesIs(forward_bpf& object, const PlaneSizes& sizes) {
  auto& maps = object.maps;
  bpf_map__set_max_entries(maps.ports, sizes.ports);
  bpf_map__set_max_entries(maps.classifiers, sizes.classifiers);
  bpf_map__set_max_entries(maps.rules, sizes.classifiers * zelRules);
  bpf_map__set_max_entries(maps.ruleSets, sizes.ruleSets);
  bpf_map__set_max_entries(maps.v4Elements, sizes.elements);
  bpf_map__set_max_entries(maps.v6Elements, sizes.elements);
  bpf_map__set_max_entries(maps.resources, sizes.resources);
  bpf_map__set_max_entries(maps.programs, sizes.resources);
  bpf_map__set_max_entries(maps.v4Roots, sizes.vrfs);
  bpf_map__set_max_entries(maps.trieNodes, sizes.trieNodes);
  bpf_map__set_max_entries(maps.v6Routes, sizes.routes);
  bpf_map__set_max_entries(maps.exactRoutes, sizes.routes);
  bpf_map__set_max_entries(maps.nextHops, sizes.nextHops);
  bpf_map__set_max_entries(maps.ruleCounters, sizes.ruleCounters);
  bpf_map__set_max_entries(maps.vrfCounters, sizes.vrfs);
  bpf_map__set_max_entries(maps.portCounters, sizes.ports);
  bpf_map__set_max_entries(maps.reasonCounters, zelReasons);
}

}  // namespace

struct KernelPlane::Object {
  explicit Object(const PlaneSizes& sizes) : skeleton(forward_bpf__open()) {
    if (skeleton == nullptr) fail(errno, "cannot read the program of the chip");
    sizesIs(*skeleton, sizes);
    const int error = forward_bpf__load(skeleton);
    if (error == 0) return;
    forward_bpf__destroy(skeleton);
    fail(-error, "the kernel refuses the program of the chip");
  }
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  ~Object() { forward_bpf__destroy(skeleton); }

  forward_bpf* skeleton;
};

KernelPlane::KernelPlane(const PlaneSizes& sizes)
    : object_(std::make_unique<Object>(sizes)),
      ports(bpf_map__fd(object_->skeleton->maps.ports)),
      classifiers(bpf_map__fd(object_->skeleton->maps.classifiers), sizes.classifiers),
      rules(bpf_map__fd(object_->skeleton->maps.rules), sizes.classifiers * std::size_t{zelRules}),
      ruleSets(bpf_map__fd(object_->skeleton->maps.ruleSets), sizes.ruleSets),
      elements(bpf_map__fd(object_->skeleton->maps.v4Elements),
               bpf_map__fd(object_->skeleton->maps.v6Elements)),
      resources(bpf_map__fd(object_->skeleton->maps.resources), sizes.resources),
      programs(bpf_map__fd(object_->skeleton->maps.programs), sizes.resources),
      v4Roots(bpf_map__fd(object_->skeleton->maps.v4Roots), sizes.vrfs),
      trieNodes(bpf_map__fd(object_->skeleton->maps.trieNodes), sizes.trieNodes),
      v6Routes(bpf_map__fd(object_->skeleton->maps.v6Routes)),
      exactRoutes(bpf_map__fd(object_->skeleton->maps.exactRoutes)),
      nextHops(bpf_map__fd(object_->skeleton->maps.nextHops), sizes.nextHops),
      ruleCounters(bpf_map__fd(object_->skeleton->maps.ruleCounters)),
      vrfCounters(bpf_map__fd(object_->skeleton->maps.vrfCounters)),
      portCounters(bpf_map__fd(object_->skeleton->maps.portCounters)),
      reasonCounters(bpf_map__fd(object_->skeleton->maps.reasonCounters)) {}

KernelPlane::~KernelPlane() = default;

FrameResult KernelPlane::run(std::span<const std::uint8_t> frame) const {
  FrameResult result;
  result.frame.resize(frame.size() + headroom);
  bpf_test_run_opts options{};
  options.sz = sizeof options;
  options.data_in = frame.data();
  options.data_size_in = static_cast<std::uint32_t>(frame.size());
  options.data_out = result.frame.data();
  options.data_size_out = static_cast<std::uint32_t>(result.frame.size());
  options.repeat = 1;
  const int program = bpf_program__fd(object_->skeleton->progs.zelForward);
  if (bpf_prog_test_run_opts(program, &options) != 0)
    fail(errno, "the kernel cannot run the program of the chip with a frame");
  result.verdict = options.retval;
  result.frame.resize(options.data_size_out);
  return result;
}

}  // namespace KernelChip
