#include "Velo/String.h"

#include <cstring>
#include <new>
#include <ostream>

#include "Velo/ByteHash.h"

namespace Velo {

String::String(std::string_view bytes) {
  if (bytes.empty()) return;
  void* memory = ::operator new(sizeof(Shared) + bytes.size());
  shared_ = new (memory) Shared{1, bytes.size()};
  std::memcpy(static_cast<char*>(memory) + sizeof(Shared), bytes.data(), bytes.size());
}

void String::release(Shared* shared) noexcept {
  ::operator delete(shared);
}

unsigned String::hash(unsigned seed) const noexcept {
  return byteHash(seed, bytes());
}

std::ostream& operator<<(std::ostream& stream, const String& text) {
  return stream << text.bytes();
}

}  // namespace Velo
