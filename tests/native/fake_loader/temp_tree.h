// Temporary directory trees for the native tests: made with mkdtemp, removed with everything in them.
#pragma once
#include <errno.h>
#include <fcntl.h>
#include <ftw.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

namespace test_support {

class TempTree {
public:
    TempTree() {
        std::string pattern = std::string(tmp_root()) + "/orvane_native_XXXXXX";
        if (mkdtemp(&pattern[0]) == nullptr) throw std::runtime_error("mkdtemp failed");
        root_ = pattern;
    }
    TempTree(const TempTree&) = delete;
    TempTree& operator=(const TempTree&) = delete;
    ~TempTree() {
        nftw(root_.c_str(), [](const char* path, const struct stat*, int, struct FTW*) { return ::remove(path); },
             16, FTW_DEPTH | FTW_PHYS);
    }

    const std::string& root() const { return root_; }
    std::string path(const std::string& relative) const { return root_ + "/" + relative; }

    // Makes a directory (parents included) below the root and returns its full path.
    std::string dir(const std::string& relative) const {
        std::string full = root_;
        size_t start = 0;
        while (start <= relative.size()) {
            size_t slash = relative.find('/', start);
            if (slash == std::string::npos) slash = relative.size();
            full += "/" + relative.substr(start, slash - start);
            if (mkdir(full.c_str(), 0755) != 0 && errno != EEXIST) throw std::runtime_error("mkdir " + full);
            start = slash + 1;
        }
        return full;
    }

    // Writes a file below the root (its directory must exist) and returns its full path.
    std::string file(const std::string& relative, const std::string& content = std::string()) const {
        std::string full = path(relative);
        FILE* f = fopen(full.c_str(), "wb");
        if (f == nullptr) throw std::runtime_error("fopen " + full);
        fwrite(content.data(), 1, content.size(), f);
        fclose(f);
        return full;
    }

    // Copies an existing file to `relative` below the root and returns the new full path.
    std::string copy(const std::string& source, const std::string& relative) const {
        FILE* in = fopen(source.c_str(), "rb");
        if (in == nullptr) throw std::runtime_error("fopen " + source);
        std::string content;
        char buffer[65536];
        size_t n;
        while ((n = fread(buffer, 1, sizeof buffer, in)) > 0) content.append(buffer, n);
        fclose(in);
        return file(relative, content);
    }

private:
    static const char* tmp_root() {
        const char* t = getenv("TMPDIR");
        return (t != nullptr && *t != '\0') ? t : "/tmp";
    }
    std::string root_;
};

}  // namespace test_support
