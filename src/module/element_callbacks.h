// The element readers of the generic callback table: one list element or sequence element converted
// by the argument converter of its kind. Results: 0 done, -1 conversion failed, -2 IndexError pending.
#pragma once

constexpr int kElementKinds = 18;
constexpr int kGenericCallbackCount = 2 * kElementKinds;

// The reader at `position`: 0 to 17 read from a list, 18 to 35 the same kinds from a sequence.
// Null for a kind whose converter is not bound yet.
void* generic_element_reader(int position);
