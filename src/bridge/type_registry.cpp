// The wrapper type registry: filled at start-up, read without a lock afterwards.
#include "bridge/type_registry.h"

#include <unordered_map>

namespace {

struct WrapperTypeRegistry {
    std::unordered_map<std::u16string, PyTypeObject*> names;
};

WrapperTypeRegistry& registry() {
    static WrapperTypeRegistry instance;
    return instance;
}

}  // namespace

void registry_register(const char16_t* managed_name, PyTypeObject* type) { registry().names[managed_name] = type; }

PyTypeObject* registry_find_name(const std::u16string& managed_name) {
    auto& names = registry().names;
    auto it = names.find(managed_name);
    return it == names.end() ? nullptr : it->second;
}
