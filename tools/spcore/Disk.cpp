#include "Disk.h"

#include "FileName.h"

#include <QStorageInfo>
#include <filesystem>

std::optional<Disk> Disk::of(QString const& folder)
{
    std::error_code error;
    std::filesystem::space_info const space =
        std::filesystem::space(FileName::toNative(folder).toStdString(), error);
    if (error || space.capacity == 0) {
        return std::nullopt;
    }
    // In a changed root that is no mount itself, Qt 6.4 knows nothing of "/".
    QStorageInfo const mount(folder);
    return Disk{mount.isValid() ? mount.rootPath() : QStringLiteral("/"), static_cast<qint64>(space.capacity),
                static_cast<qint64>(space.available), mount.isValid() && mount.isReadOnly()};
}
