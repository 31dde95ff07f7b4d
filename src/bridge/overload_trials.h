// Overload dispatch by trial: the first overload whose arguments parse is called; if none parses,
// one TypeError carries the list of every trial's message.
#pragma once
#include <Python.h>

#include <cstddef>
#include <cstdint>

// Number of arguments of a call, positional and keyword: a trial of another arity can't parse.
inline Py_ssize_t argument_count(PyObject* args, PyObject* kwargs) {
    return PyTuple_GET_SIZE(args) + (kwargs != nullptr ? PyDict_GET_SIZE(kwargs) : 0);
}

// What a positional argument must be for a parameter's converter to have a chance; a trial whose
// arguments certainly fail is left for the second pass, which makes its message only when no trial
// matches. So a call that reaches a later overload builds no exception for the earlier ones.
enum TrialArgument : uint8_t {
    kAnyArgument = 0,  // the converter decides
    kStrArgument,      // str (or a subclass) or None
    kBoolArgument,     // True or False
    kNumberArgument,   // not an exact str, bytes or None
    kWrapperArgument,  // not an exact int, float, str, bool, tuple or list
};

// False when a positional argument certainly fails its parameter's converter.
bool trial_may_match(PyObject* args, const uint8_t* kinds, Py_ssize_t count);

// One overload as data: its arity, the TrialArgument kind of each parameter (null: no quick look) and
// the function that parses the arguments and, when they convert, calls the entry. That function sets
// *parsed and returns the call's result, or leaves the parse error set and *parsed false.
template <typename Result>
struct OverloadTrial {
    Py_ssize_t arity;
    const uint8_t* kinds;
    Result (*run)(PyObject* self, PyObject* args, PyObject* kwargs, bool* parsed);
};

constexpr size_t kMaxTrials = 32;

// The dispatch of every overloaded method and constructor. First pass: the trials whose arity matches
// and whose arguments pass the quick look, in order; the first that parses is final, whatever its call
// does. Second pass, only when none parsed: the others, for their messages; then raise_trial_errors.
// A trial that failed in the first pass keeps its error; a trial left for the second builds none
// unless no trial matches.
template <typename Result>
Result dispatch_trials(const OverloadTrial<Result>* trials, size_t count, PyObject* self, PyObject* args,
                       PyObject* kwargs, Result failure);

// A failed parse: keeps the exception's value in `slot` and clears the error for the next trial.
void keep_trial_error(PyObject** slot);

// Drops the kept values of the trials before a successful one.
void drop_trial_errors(PyObject** slots, size_t count);

// All trials failed: TypeError whose value is the list of the trials' texts; but a trial that failed
// on a value it could not pass (a ValueError or RecursionError) raises that error instead. Drops the slots.
void raise_trial_errors(PyObject** slots, size_t count);

// A single-trial call failed with OverflowError: finds the argument that overflows its parameter's
// converter and names the parameter in the message ("parameter 'x': Python int too large ...").
// Other errors are left as they are. Cold: runs only on that failure.
using ParamConverter = int (*)(PyObject*, void*);
void name_overflowing_argument(PyObject* args, PyObject* kwargs, const char* const* keywords,
                               const ParamConverter* converters, size_t count);

// The same for a property setter whose value overflowed: "attribute 'x': ...".
void name_overflowing_attribute(const char* name);

// Out and ref parameters: a one-element list carries the value both ways.
struct ListCell {
    PyObject* list;  // borrowed
    int (*item_converter)(PyObject*, void*);
    void* item_output;
};
int convert_list_cell(PyObject* object, void* cell);

// Puts a new reference in element 0 of the list (or appends it to an empty list). 0 or -1.
int store_out_value(PyObject* list, PyObject* value);

// The out values of one call: wrapped in parameter order, then stored in their lists. References not
// yet stored are dropped on every failure path.
template <size_t N>
class OutValues {
public:
    OutValues() = default;
    OutValues(const OutValues&) = delete;
    OutValues& operator=(const OutValues&) = delete;
    ~OutValues() {
        for (size_t i = stored_; i < made_; ++i) Py_XDECREF(values_[i]);
    }
    // Takes a new reference (or null with an exception set); false on failure.
    bool add(PyObject* value) {
        if (value == nullptr || PyErr_Occurred()) {
            Py_XDECREF(value);
            return false;
        }
        values_[made_++] = value;
        return true;
    }
    bool store(PyObject* const* lists) {
        while (stored_ < made_) {
            PyObject* value = values_[stored_++];
            if (store_out_value(lists[stored_ - 1], value) < 0) return false;
        }
        return true;
    }

private:
    PyObject* values_[N] = {};
    size_t made_ = 0;
    size_t stored_ = 0;
};

// The argument object of a parsed call at `index`, positional or by keyword (borrowed; null if absent).
inline PyObject* argument_object(PyObject* args, PyObject* kwargs, Py_ssize_t index, const char* keyword) {
    if (index < PyTuple_GET_SIZE(args)) return PyTuple_GET_ITEM(args, index);
    return kwargs != nullptr ? PyDict_GetItemString(kwargs, keyword) : nullptr;
}
