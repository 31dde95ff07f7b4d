// Start-up check on Windows without Python: the host starts coreclr.dll through the loader DLL, binds
// ExchangeHost and ObjectHost entries of the real interop assembly, and draws with System.Drawing.Bitmap
// over the system's GDI+. The discovery variables name the layout, as the Python package sets them.
//   runtime_check.exe Key=Class::method ...   (the generated System.Drawing entries it calls, which the
//   driver script looks up by their signatures; the keys are those of kDrawingEntries)
// Prints one line per check and exits with the number of failed checks.
#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "host/core/host_runtime.h"
#include "host/core/text_encoding.h"

namespace {

constexpr char kAssembly[] = "WrpInterop.Orvane.PyFigura";
constexpr char kExchange[] = "Orvane.WrpGen.Interop.ExchangeHost";
constexpr char kObject[] = "Orvane.WrpGen.Interop.ObjectHost";

struct ColorValue { uint8_t a, r, g, b; int32_t state; };  // System.Drawing.Color on the wire; state 0: ARGB
struct StringArg { int32_t length, kind; const void* data; };  // kind: bytes per code point
// Points into `text`, which must outlive it.
StringArg arg(const std::u16string& text) { return {static_cast<int32_t>(text.size()), 2, text.data()}; }

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

// The generated entries called below, by key: given on the command line as Key=Class::method.
const char* const kDrawingEntries[] = {"NewBitmap", "LoadBitmap", "SetPixel", "GetPixel", "FromImage",
                                       "FillRectangle", "DrawString", "NewSolidBrush", "Save", "NewFont"};
std::map<std::string, std::pair<std::string, std::string>> g_entries;

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

template <typename Fn>
Fn bind_drawing(host::HostRuntime& rt, const char* key) {
    const auto& entry = g_entries.at(key);
    return bind<Fn>(rt, entry.first.c_str(), entry.second.c_str());
}

}  // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        size_t equals = a.find('='), colons = a.find("::");
        if (equals != std::string::npos && colons != std::string::npos && colons > equals)
            g_entries[a.substr(0, equals)] = {a.substr(equals + 1, colons - equals - 1), a.substr(colons + 2)};
    }
    for (const char* key : kDrawingEntries) {
        if (g_entries.count(key) == 0) {
            std::fprintf(stderr, "usage: runtime_check Key=Class::method ...; no entry for %s\n", key);
            return 2;
        }
    }
    host::HostRuntime& rt = host::host_runtime_instance(u"3.1", false, u"orvane", u"pyfigura");
    check(rt.domain_initialized, "runtime started from " + rt.runtime_directory);

    using SetBuilder = void (*)(void* (*)(const char16_t*, int32_t));
    for (const char* setter :
         {"SetU16StrBuilderCallback", "SetPyStrBuilderCallback", "SetPyUnraisableStrBuilderCallback"})
        bind<SetBuilder>(rt, kExchange, setter)(build_text);
    bind<void (*)(void (*)(void*, void*))>(rt, kExchange, "SetExceptionCallback")(record_error);
    bind<void (*)()>(rt, kExchange, "InitServices")();
    auto type_name = bind<void* (*)(intptr_t)>(rt, kExchange, "GetTypeName");
    auto free_instance = bind<void (*)(intptr_t)>(rt, kExchange, "FreeInstance");
    auto to_string = bind<int32_t (*)(intptr_t, void**)>(rt, kObject, "ToStringOfObj");
    auto dispose = bind<void (*)(intptr_t)>(rt, kObject, "Dispose");
    auto release = [&](intptr_t handle) { dispose(handle), free_instance(handle); };

    auto create = bind_drawing<intptr_t (*)(int32_t, int32_t)>(rt, "NewBitmap");
    auto set_pixel = bind_drawing<void (*)(intptr_t, int32_t, int32_t, const ColorValue*)>(rt, "SetPixel");
    auto get_pixel = bind_drawing<void (*)(intptr_t, int32_t, int32_t, ColorValue*)>(rt, "GetPixel");
    intptr_t bitmap = create(4, 3);
    check(bitmap != 0 && g_error.empty(), "new Bitmap(4, 3) " + g_error);
    if (bitmap == 0) return 1 + g_failures;
    // System.Drawing draws through the system's GDI+: name the file it was loaded from.
    wchar_t gdiplus[MAX_PATH] = {};
    HMODULE gdiplus_module = GetModuleHandleW(L"gdiplus.dll");
    if (gdiplus_module != nullptr) GetModuleFileNameW(gdiplus_module, gdiplus, MAX_PATH);
    check(gdiplus_module != nullptr,
          "GDI+ in the process: " + host::utf16_to_utf8(reinterpret_cast<const char16_t*>(gdiplus)));
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
    g_error.clear();

    // Drawing: a brush fills a corner through Graphics.FromImage.
    auto from_image = bind_drawing<intptr_t (*)(intptr_t)>(rt, "FromImage");
    auto fill = bind_drawing<void (*)(intptr_t, intptr_t, int32_t, int32_t, int32_t, int32_t)>(rt, "FillRectangle");
    const ColorValue red{255, 255, 0, 0, 0};
    intptr_t graphics = from_image(bitmap);
    intptr_t brush = bind_drawing<intptr_t (*)(const ColorValue*)>(rt, "NewSolidBrush")(&red);
    fill(graphics, brush, 0, 0, 2, 2);
    get_pixel(bitmap, 0, 0, &read);
    check(g_error.empty() && read.a == 255 && read.r == 255 && read.g == 0 && read.b == 0,
          "Graphics.FromImage + FillRectangle(SolidBrush red) " + g_error);

    // Text: a font of the system's (DejaVu Sans, from fontconfig under Wine) drawn on a larger bitmap.
    auto draw_string = bind_drawing<void (*)(intptr_t, const StringArg*, intptr_t, intptr_t, float, float)>(
        rt, "DrawString");
    const std::u16string family_name = u"DejaVu Sans", drawn = u"Orvane";
    const StringArg family = arg(family_name), word = arg(drawn);
    intptr_t font = bind_drawing<intptr_t (*)(const StringArg*, float)>(rt, "NewFont")(&family, 14.0f);
    check(font != 0 && g_error.empty(), "new Font(\"DejaVu Sans\", 14) " + g_error);
    intptr_t canvas = create(80, 24);
    intptr_t canvas_graphics = from_image(canvas);
    draw_string(canvas_graphics, &word, font, brush, 0.0f, 0.0f);
    int inked = 0;
    for (int y = 0; y < 24; ++y)
        for (int x = 0; x < 80; ++x) get_pixel(canvas, x, y, &read), inked += read.a != 0;
    check(g_error.empty() && inked > 40, "DrawString inks " + std::to_string(inked) + " pixels " + g_error);
    for (intptr_t handle : {canvas_graphics, canvas, font}) release(handle);
    dispose(graphics);

    // Files: saved as PNG (the default encoder of a file without format) and read back.
    wchar_t temp[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH, temp);
    const std::u16string path = reinterpret_cast<const char16_t*>(temp) + std::u16string(u"orvane_runtime_check.png");
    const StringArg path_arg = arg(path);
    bind_drawing<void (*)(intptr_t, const StringArg*)>(rt, "Save")(bitmap, &path_arg);
    check(g_error.empty(), "Image.Save(" + host::utf16_to_utf8(path) + ") " + g_error);
    intptr_t reloaded = bind_drawing<intptr_t (*)(const StringArg*)>(rt, "LoadBitmap")(&path_arg);
    check(reloaded != 0 && g_error.empty(), "new Bitmap(path) " + g_error);
    if (reloaded != 0) {
        ColorValue corner{}, pixel{};
        get_pixel(reloaded, 0, 0, &corner);
        get_pixel(reloaded, 1, 2, &pixel);
        check(g_error.empty() && corner.r == 255 && corner.g == 0 && pixel.a == 200 && pixel.r == 10 &&
                  pixel.g == 20 && pixel.b == 30,
              "PNG round trip keeps the pixels " + g_error);
        release(reloaded);
    }
    DeleteFileW(reinterpret_cast<const wchar_t*>(path.c_str()));

    for (intptr_t handle : {brush, graphics}) free_instance(handle);
    release(bitmap);
    std::printf("%d failed\n", g_failures);
    return g_failures;
}
