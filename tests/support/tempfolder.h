// Files, and a folder of a test's own, removed with everything in it.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace test {

inline std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class TempFolder {
public:
    TempFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "lumetra-XXXXXX").string();
        if (!mkdtemp(name.data())) std::abort();
        path_ = name;
    }
    ~TempFolder() {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::string& Path() const { return path_; }
    std::string Path(std::string_view name) const { return path_ + "/" + std::string(name); }

    // Makes the folders on the way to it too; gives its path.
    std::string Write(std::string_view name, std::string_view bytes) const {
        const std::string path = Path(name);
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return path;
    }

    // The path with `\` between its parts, as the program names files.
    static std::string Backslashes(std::string path) {
        for (char& c : path) c = c == '/' ? '\\' : c;
        return path;
    }

private:
    std::string path_;
};

}  // namespace test
