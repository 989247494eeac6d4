// net/process_variant.h - the one input of a run: a process of one kind out of those a mode takes.
// The position of an alternative is its tag.
#pragma once

#include <memory>
#include <variant>

#include "net/process.h"

namespace vorel::net {

using FullVariant = std::variant<NetPrefix, StgPrefix, NetMergedProcess, StgMergedProcess>;
using NoStgMergedVariant = std::variant<NetPrefix, StgPrefix, NetMergedProcess>;
using StgPrefixVariant = std::variant<StgPrefix>;

#define VOREL_FOR_EACH_SHAPE(X) \
  X(net::FullVariant) X(net::NoStgMergedVariant) X(net::StgPrefixVariant)

template <class Shape, class P>
inline constexpr bool shape_accepts = false;
template <class P, class... Alternatives>
inline constexpr bool shape_accepts<std::variant<Alternatives...>, P> =
    (std::is_same_v<P, Alternatives> || ...);

}  // namespace vorel::net
