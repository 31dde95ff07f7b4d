// Every piece of process-wide state of the extension, where it lives and who may change it. Nothing else
// is global: a test fails when a file-scope or function-static variable appears that is not listed here.
//
// Set once at start-up (under the interpreter lock), read from then on:
//   interned_name_table   common/interned_names.cpp   interned strings of attribute and method names
//   g_runtime, instance   host/core/host_runtime.cpp  the one started .NET runtime, and its exit step
//   runtime               host/core/host_runtime.cpp  (the HostRuntime object behind `instance`)
//   g_trace_enabled       host/core/host_trace.cpp    ORVANE trace switch
//   g_signals             host/platform/platform_posix.cpp  signal dispositions from before the runtime
//   g_faults              host/platform/platform_posix.cpp  fault forwarder targets (faulthandler's, the runtime's)
//   table                 host/entry_tables.cpp       the ExchangeHost and ObjectHost entry tables
//   g_values_in, g_values_out, g_buffers, g_references, g_iteration, g_containers, g_lists, g_sequences,
//   g_streams, g_static_groups, g_generic_functions, g_generic_cells
//                         generated callback_tables.cpp and generic_callbacks.cpp (from api/callbacks.json):
//                         the callback tables handed to managed code
//   g_dispose_guard       bridge/wrapper_object.cpp   the check every dispose() asks first
//   g_root_def, g_sub_defs, g_wrpgen_def, g_interop_def, g_generic_def, g_interop_functions
//                         module/module_tree.cpp      module definitions (live as long as their modules)
//   Point_capsule_slot, Point_capsule_v1_slot, PointF_capsule_slot, PointF_capsule_v1_slot, Size_capsule_slot,
//   Size_capsule_v1_slot, SizeF_capsule_slot, SizeF_capsule_v1_slot, Rectangle_capsule_slot,
//   Rectangle_capsule_v1_slot, RectangleF_capsule_slot, RectangleF_capsule_v1_slot, Color_capsule_slot,
//   Color_capsule_v1_slot  values/*.cpp             the value types' capsule rows
//   the per-class entry tables and type statuses      generated classes (function statics, bound on first use)
//   entries               interop/list_wrappers.cpp   entries of the list protocol
//
// Changed at run time:
//   g_forked_child        host/core/host_runtime.cpp  set in a forked child, before any Python code runs there
//   instance              bridge/type_registry.cpp    managed name and type key -> wrapper type (its own mutexes)
//   g_active, state       host/released_calls.cpp     threads inside released calls; per thread, its saved state
//   g_mutex, g_free, g_generation  bridge/object_use.cpp  waking threads that wait for an object in use
//   g_locked              interop/locked_bits.cpp     BitmapData objects whose bits are locked (interpreter lock)
//   g_partner_links       bridge/object_use.cpp       objects with a partner, for a dispose of the partner
// The wrapped objects carry their own state (handle, extras, partner, user thread).
#pragma once
