// bdd/cudd_interface.h - the header of CUDD, made fit for C++.
// Here:      the types and macros that the header expects from the program around it.
// Not here:  anything of ours. Included by .cpp files of this folder and by tests: all others see
//            only Bdd.
#pragma once

#include <cstdint>
#include <cstdio>

static_assert(sizeof(void*) == 8 && sizeof(long) == 8, "the library is built for this");
#define SIZEOF_VOID_P 8
#define SIZEOF_LONG 8
using ABC_INT64_T = std::int64_t;
using ABC_PTRINT_T = std::intptr_t;
using ABC_PTRUINT_T = std::uintptr_t;
using ptrint = std::intptr_t;
using ptruint = std::uintptr_t;
#define ABC_NAMESPACE_HEADER_START extern "C" {
#define ABC_NAMESPACE_HEADER_END }
#include "bdd/cudd/cudd.h"
#undef ABC_NAMESPACE_HEADER_START
#undef ABC_NAMESPACE_HEADER_END

static_assert(sizeof(DdNode) == 40, "the library and this header agree on what a node is");
