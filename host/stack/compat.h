// Force-included when the Android sources are built for Linux: what bionic and its headers give
// them for free.
#pragma once
#ifdef __cplusplus
#include <atomic>
#include <memory>
#include <optional>
#endif
#include <stdint.h>
#ifdef DOV_NO_FENCES
// An acquiring decrement says to the sanitizer what a releasing one and a fence say to the machine.
#define memory_order_release memory_order_acq_rel
#endif
// Bionic's binder header names these fields of flat_binder_object.flags; the kernel's own header
// does not.
#define FLAT_BINDER_FLAG_SCHED_POLICY_SHIFT 9U
#define FLAT_BINDER_FLAG_SCHED_POLICY_MASK (3U << FLAT_BINDER_FLAG_SCHED_POLICY_SHIFT)
#define FLAT_BINDER_FLAG_INHERIT_RT 0x800
