// Temporary directory trees for the native tests: made with mkdtemp, removed with everything in them.
#pragma once
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace test_support {

// Entries are relative to the root: "a/b/" is a directory, "a/b" an empty file; parents are made.
class TempTree {
public:
    explicit TempTree(const std::vector<std::string>& entries = {}) {
        std::string pattern = std::filesystem::temp_directory_path().string() + "/orvane_native_XXXXXX";
        if (mkdtemp(&pattern[0]) == nullptr) throw std::runtime_error("mkdtemp failed");
        root_ = pattern;
        for (const std::string& entry : entries) add(entry);
    }
    TempTree(const TempTree&) = delete;
    TempTree& operator=(const TempTree&) = delete;
    ~TempTree() {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }

    const std::string& root() const { return root_; }
    std::string path(const std::string& relative) const { return root_ + "/" + relative; }

    void add(const std::string& entry) const {
        const std::filesystem::path full = path(entry);
        std::filesystem::create_directories(entry.back() == '/' ? full : full.parent_path());
        if (entry.back() != '/' && !std::ofstream(full)) throw std::runtime_error("cannot write " + full.string());
    }

    // Copies an existing file to `relative` below the root.
    void copy(const std::string& source, const std::string& relative) const {
        add(relative);
        std::filesystem::copy_file(source, path(relative), std::filesystem::copy_options::overwrite_existing);
    }

private:
    std::string root_;
};

}  // namespace test_support
