#include <files/FilePaths.h>

QString path()
{
    return FilePaths::buildAbsoluteFilePath("/d", "a", "b.txt", true) +
           FilePaths::buildAbsoluteFilePath("/d", "a", true) + FilePaths::buildAbsoluteFilePath("/d", "a");
}
