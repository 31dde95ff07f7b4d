// Helpers of the Windows host tests: wide/UTF-8 text, the test program's directory, temporary trees.
#pragma once
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace windows_test {

inline std::string utf8(const std::wstring& wide) {
    std::string out(wide.size() * 4, '\0');
    out.resize(WideCharToMultiByte(CP_UTF8, 0, wide.c_str(), static_cast<int>(wide.size()), &out[0],
                                   static_cast<int>(out.size()), nullptr, nullptr));
    return out;
}

inline std::wstring own_executable() {
    wchar_t buffer[MAX_PATH + 1] = {};
    return std::wstring(buffer, GetModuleFileNameW(nullptr, buffer, MAX_PATH));
}

// The fake loader library, built into fake\ beside the test program.
inline std::filesystem::path fake_loader() {
    return std::filesystem::path(own_executable()).parent_path() / L"fake" / L"orvane.embed.coreclrwrap.dll";
}

// A fresh directory under the temporary directory whose name holds non-ASCII letters, so that every path
// through the host goes the UTF-8 and UTF-16 way; removed with its contents at the end. Entries ending in a
// backslash are directories, others empty files; parents are made.
class TempTree {
public:
    explicit TempTree(const wchar_t* tag, const std::vector<std::wstring>& entries = {}) {
        root_ = std::filesystem::temp_directory_path() /
                (std::wstring(L"orvane_\u00e9t\u00e9_\u0436_") + tag + L"_" + std::to_wstring(GetCurrentProcessId()));
        std::filesystem::remove_all(root_);
        std::filesystem::create_directories(root_);
        for (const std::wstring& entry : entries) {
            std::filesystem::create_directories(entry.back() == L'\\' ? root_ / entry : (root_ / entry).parent_path());
            if (entry.back() != L'\\') std::ofstream(root_ / entry, std::ios::binary);
        }
    }
    ~TempTree() {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    TempTree(const TempTree&) = delete;
    TempTree& operator=(const TempTree&) = delete;

    std::string root() const { return utf8(root_.wstring()); }
    std::filesystem::path path(const std::wstring& relative) const { return root_ / relative; }

private:
    std::filesystem::path root_;
};

}  // namespace windows_test
