// Temporary directory trees for the native tests: made with mkdtemp, removed with everything in them.
#pragma once
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace test_support {

class TempTree {
public:
    TempTree() {
        const char* tmp = getenv("TMPDIR");
        std::string pattern = std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/orvane_native_XXXXXX";
        if (mkdtemp(&pattern[0]) == nullptr) throw std::runtime_error("mkdtemp failed");
        root_ = pattern;
    }
    TempTree(const TempTree&) = delete;
    TempTree& operator=(const TempTree&) = delete;
    ~TempTree() {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }

    const std::string& root() const { return root_; }
    std::string path(const std::string& relative) const { return root_ + "/" + relative; }

    // Makes a directory (parents included) below the root and returns its full path.
    std::string dir(const std::string& relative) const {
        std::filesystem::create_directories(path(relative));
        return path(relative);
    }

    // Writes a file below the root (making its directory) and returns its full path.
    std::string file(const std::string& relative, const std::string& content = std::string()) const {
        std::filesystem::create_directories(std::filesystem::path(path(relative)).parent_path());
        std::ofstream out(path(relative), std::ios::binary);
        if (!(out << content)) throw std::runtime_error("cannot write " + path(relative));
        return path(relative);
    }

    // Copies an existing file to `relative` below the root and returns the new full path.
    std::string copy(const std::string& source, const std::string& relative) const {
        file(relative);
        std::filesystem::copy_file(source, path(relative), std::filesystem::copy_options::overwrite_existing);
        return path(relative);
    }

private:
    std::string root_;
};

}  // namespace test_support
