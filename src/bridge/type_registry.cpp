// The wrapper type registry: names filled at start-up and read without a lock; key caches under mutexes.
#include "bridge/type_registry.h"

#include <mutex>
#include <unordered_map>

#include "bridge/wrapper_object.h"
#include "module/interned_names.h"

namespace {

struct WrapperTypeRegistry {
    std::unordered_map<std::u16string, PyTypeObject*> names;
    std::unordered_map<TypeKey, PyTypeObject*> by_key;
    std::mutex by_key_mutex;
    std::unordered_map<TypeKey, PyTypeObject*> by_key_typed;  // caches misses too
    std::mutex by_key_typed_mutex;
};

WrapperTypeRegistry& registry() {
    static WrapperTypeRegistry instance;
    return instance;
}

bool implements_implicitly(PyTypeObject* type, PyTypeObject* interface_type) {
    PyObject* set = PyDict_GetItem(type->tp_dict, interned(InternedName::ImplicitInterfaces));
    if (set == nullptr || !PyAnySet_Check(set)) return false;
    int contains = PySet_Contains(set, reinterpret_cast<PyObject*>(interface_type));
    if (contains < 0) {
        PyErr_Clear();
        return false;
    }
    return contains == 1;
}

}  // namespace

void registry_register(const char16_t* managed_name, PyTypeObject* type) { registry().names[managed_name] = type; }

PyTypeObject* registry_find_name(const std::u16string& managed_name) {
    auto& names = registry().names;
    auto it = names.find(managed_name);
    return it == names.end() ? nullptr : it->second;
}

PyTypeObject* registry_find_by_handle(InstanceHandle handle) {
    WrapperTypeRegistry& r = registry();
    std::u16string* name = exchange_host().GetTypeName(handle);
    if (name == nullptr) return nullptr;
    auto it = r.names.find(*name);
    delete name;
    return it == r.names.end() ? nullptr : it->second;
}

PyTypeObject* registry_find_by_key(InstanceHandle handle, TypeKey key) {
    WrapperTypeRegistry& r = registry();
    {
        std::lock_guard<std::mutex> lock(r.by_key_mutex);
        auto it = r.by_key.find(key);
        if (it != r.by_key.end()) return it->second;
    }
    PyTypeObject* found = registry_find_by_handle(handle);
    if (found != nullptr) {
        std::lock_guard<std::mutex> lock(r.by_key_mutex);
        r.by_key[key] = found;
    }
    return found;
}

PyTypeObject* registry_find_by_typed_handle(const TypedHandle* typed) {
    WrapperTypeRegistry& r = registry();
    {
        std::lock_guard<std::mutex> lock(r.by_key_typed_mutex);
        auto it = r.by_key_typed.find(typed->type_key);
        if (it != r.by_key_typed.end()) return it->second;
    }
    PyTypeObject* found = registry_find_by_handle(typed->handle);
    std::lock_guard<std::mutex> lock(r.by_key_typed_mutex);
    r.by_key_typed[typed->type_key] = found;
    return found;
}

PyObject* wrap_by_key(InstanceHandle handle, TypeKey key) {
    PyTypeObject* type = registry_find_by_key(handle, key);
    if (type == nullptr) {
        exchange_host().FreeInstance(handle);
        PyErr_SetString(PyExc_TypeError, "unknown wrapper type");
        return nullptr;
    }
    return wrap_exact(handle, type);
}

int32_t wrap_by_key_quiet(InstanceHandle handle, TypeKey key, PyObject** out) {
    PyTypeObject* type = registry_find_by_key(handle, key);
    if (type == nullptr) {
        exchange_host().FreeInstance(handle);
        return 0;
    }
    *out = wrap_exact(handle, type);
    return *out != nullptr ? 1 : -1;
}

PyObject* wrap_typed(const TypedHandle* typed, PyTypeObject* declared) {
    if (typed->handle == 0) Py_RETURN_NONE;
    PyTypeObject* found = registry_find_by_typed_handle(typed);
    PyTypeObject* type = found != nullptr && implements_implicitly(found, declared) ? found : declared;
    return wrap_exact(typed->handle, type);
}

