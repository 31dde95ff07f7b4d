// The two callback tables through which managed code reads and makes Python values.
#pragma once

// Nine groups of function pointers, in group order: values in, values out, buffers, references,
// iteration, containers, lists, sequences, streams.
void* const* py_static_callbacks();

// 36 cells, each the address of a function pointer: 18 element kinds read from a list, then from a sequence.
void* const* py_generic_callbacks();

enum CallbackGroup : int {
    kGroupValuesIn = 0,
    kGroupValuesOut = 1,
    kGroupBuffers = 2,
    kGroupReferences = 3,
    kGroupIteration = 4,
    kGroupContainers = 5,
    kGroupLists = 6,
    kGroupSequences = 7,
    kGroupStreams = 8,
};
