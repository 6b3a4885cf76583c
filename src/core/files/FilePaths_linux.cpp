#include "FilePaths_p.h"

#include <QFile>
#include <filesystem>

QString FilePathsDetail::executableFilePath()
{
    std::error_code error;
    std::filesystem::path const path = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? QString() : QFile::decodeName(path.c_str());
}
