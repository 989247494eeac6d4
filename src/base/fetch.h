// base/fetch.h - a hint that something will be read soon.
#pragma once

namespace vorel::base {

// Brings the cache line of an address into the cache of this processor, without waiting for it.
inline void fetch(const void* address) {
#if defined(__GNUC__)
  __builtin_prefetch(address);
#else
  static_cast<void>(address);
#endif
}

}  // namespace vorel::base
