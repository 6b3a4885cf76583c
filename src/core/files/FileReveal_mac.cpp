#include "FileReveal_p.h"

FileReveal::Program FileReveal::desktopProgram(QString const& path)
{
    return {QStringLiteral("/usr/bin/open"), {QStringLiteral("-R"), path}};
}
