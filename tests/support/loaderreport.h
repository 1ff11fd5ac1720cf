// The dynamic loader's own report of what the programs a test starts load
// (Linux): LD_DEBUG=files for every process started while the object
// lives, each writing "loader.<pid>" in a folder; Take() answers all of
// them and removes them.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

class LoaderReport {
public:
    explicit LoaderReport(const std::string& where) : folder(where) {
        std::string prefix = (std::filesystem::path(where) / "loader").string();
        ::setenv("LD_DEBUG", "files", 1);
        ::setenv("LD_DEBUG_OUTPUT", prefix.c_str(), 1);
    }
    ~LoaderReport() {
        ::unsetenv("LD_DEBUG");
        ::unsetenv("LD_DEBUG_OUTPUT");
    }
    LoaderReport(const LoaderReport&) = delete;
    LoaderReport& operator=(const LoaderReport&) = delete;

    std::string Take() const {
        std::string text;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (entry.path().filename().string().rfind("loader.", 0) != 0) continue;
            std::stringstream part;
            part << std::ifstream(entry.path()).rdbuf();
            text += part.str();
            std::filesystem::remove(entry.path());
        }
        return text;
    }

private:
    std::string folder;
};
