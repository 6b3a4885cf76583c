#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>

/// The input as a file, in memory where the system has a file system for that.
class InputFile
{
public:
    InputFile(std::uint8_t const* data, std::size_t size)
    {
        std::ofstream out(path(), std::ios::binary);
        out.write(reinterpret_cast<char const*>(data), static_cast<std::streamsize>(size));
    }

    ~InputFile()
    {
        std::error_code ignored;
        std::filesystem::remove(path(), ignored);
    }
    InputFile(InputFile const&) = delete;
    InputFile& operator=(InputFile const&) = delete;

    static std::filesystem::path path()
    {
        std::filesystem::path const memory("/dev/shm");
        std::filesystem::path const folder =
            std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
        return folder / ("spcore-fuzz-" + std::to_string(getpid()) + ".wav");
    }

    static std::string content()
    {
        std::ifstream in(path(), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }
};
