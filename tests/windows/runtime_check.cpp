// Start-up check on Windows without Python: the host starts coreclr.dll through the loader DLL, binds
// ExchangeHost and ObjectHost entries of the real interop assembly, and draws with System.Drawing.Bitmap
// over the system's GDI+. The discovery variables name the layout, as the Python package sets them.
//   runtime_check.exe <Bitmap entry class>     (its generated name, looked up by the driver script)
// Prints one line per check and exits with the number of failed checks.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "host/core/host_runtime.h"
#include "host/core/text_encoding.h"

namespace {

constexpr char kAssembly[] = "WrpInterop.Orvane.PyFigura";
constexpr char kExchange[] = "Orvane.WrpGen.Interop.ExchangeHost";
constexpr char kObject[] = "Orvane.WrpGen.Interop.ObjectHost";

// The wire form of System.Drawing.Color (ColorValue of the interop assembly).
struct ColorValue {
    uint8_t a, r, g, b;
    int32_t state;  // 0: plain ARGB
};

// Python objects are opaque to the managed side: here they are heap UTF-16 strings.
void* build_text(const char16_t* text, int32_t length) { return new std::u16string(text, length); }
std::string take_text(void* text) {
    auto* owned = static_cast<std::u16string*>(text);
    std::string out = owned != nullptr ? host::utf16_to_utf8(*owned) : std::string("(null)");
    delete owned;
    return out;
}

std::string g_error;  // the last managed exception reported, as "Type: message"
void record_error(void* type, void* message) { g_error = take_text(type) + ": " + take_text(message); }

int g_failures = 0;
void check(bool ok, const std::string& what) {
    std::printf("%s %s\n", ok ? "PASS" : "FAIL", what.c_str());
    std::fflush(stdout);
    if (!ok) ++g_failures;
}

template <typename Fn>
Fn bind(host::HostRuntime& rt, const char* class_name, const char* method) {
    void* entry = nullptr;
    uint32_t status = host::bind_managed_entry(rt, kAssembly, class_name, method, &entry);
    check(status == 0 && entry != nullptr, std::string("bind ") + class_name + "." + method);
    if (status != 0 || entry == nullptr) {
        std::printf("  status 0x%08X\n", static_cast<unsigned>(status));
        std::exit(1 + g_failures);
    }
    return reinterpret_cast<Fn>(entry);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: runtime_check <Bitmap entry class>\n");
        return 2;
    }
    const char* bitmap_class = argv[1];
    host::HostRuntime& rt = host::host_runtime_instance(u"3.1", false, u"orvane", u"pyfigura");
    check(rt.domain_initialized, "runtime started from " + rt.runtime_directory);

    using SetBuilder = void (*)(void* (*)(const char16_t*, int32_t));
    bind<SetBuilder>(rt, kExchange, "SetU16StrBuilderCallback")(build_text);
    bind<SetBuilder>(rt, kExchange, "SetPyStrBuilderCallback")(build_text);
    bind<SetBuilder>(rt, kExchange, "SetPyUnraisableStrBuilderCallback")(build_text);
    bind<void (*)(void (*)(void*, void*))>(rt, kExchange, "SetExceptionCallback")(record_error);
    bind<void (*)()>(rt, kExchange, "InitServices")();
    auto type_name = bind<void* (*)(intptr_t)>(rt, kExchange, "GetTypeName");
    auto free_instance = bind<void (*)(intptr_t)>(rt, kExchange, "FreeInstance");
    auto to_string = bind<int32_t (*)(intptr_t, void**)>(rt, kObject, "ToStringOfObj");
    auto dispose = bind<void (*)(intptr_t)>(rt, kObject, "Dispose");

    auto create = bind<intptr_t (*)(int32_t, int32_t)>(rt, bitmap_class, "ctor_003_Bitmap");
    auto set_pixel = bind<void (*)(intptr_t, int32_t, int32_t, const ColorValue*)>(rt, bitmap_class,
                                                                                    "call_000_SetPixel");
    auto get_pixel = bind<void (*)(intptr_t, int32_t, int32_t, ColorValue*)>(rt, bitmap_class, "call_000_GetPixel");

    intptr_t bitmap = create(4, 3);
    check(bitmap != 0 && g_error.empty(), "new Bitmap(4, 3) " + g_error);
    if (bitmap == 0) return 1 + g_failures;
    check(take_text(type_name(bitmap)) == "System.Drawing.Bitmap", "GetTypeName");
    void* text = nullptr;
    check(to_string(bitmap, &text) == 1 && take_text(text) == "System.Drawing.Bitmap", "ToStringOfObj");

    const ColorValue written{200, 10, 20, 30, 0};
    set_pixel(bitmap, 1, 2, &written);
    ColorValue read{0, 0, 0, 0, -1};
    get_pixel(bitmap, 1, 2, &read);
    char line[96];
    std::snprintf(line, sizeof line, "SetPixel/GetPixel round trip: ARGB %u,%u,%u,%u state %d %s", read.a, read.r,
                  read.g, read.b, static_cast<int>(read.state), g_error.c_str());
    check(g_error.empty() && read.a == 200 && read.r == 10 && read.g == 20 && read.b == 30 && read.state == 0, line);

    get_pixel(bitmap, 99, 0, &read);
    check(g_error.rfind("System.ArgumentOutOfRangeException: ", 0) == 0, "GetPixel(99, 0) reports " + g_error);

    dispose(bitmap);
    free_instance(bitmap);
    std::printf("%d failed\n", g_failures);
    return g_failures;
}
