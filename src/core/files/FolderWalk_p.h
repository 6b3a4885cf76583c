#pragma once

#include <QByteArray>
#include <functional>

/// A walk over what a folder holds that follows no symbolic link.
///
/// Every step is relative to an open folder, so that a folder replaced by a link meanwhile leads nowhere.
/// Stack and descriptors in use do not grow with the depth of the tree, nor is any path put together that
/// could become too long for the system.
namespace FolderWalk {

enum class Depth { OneFolder, WholeTree };

struct Visitor
{
    /// Called for everything that is no folder: \a folder is the descriptor of the folder that holds
    /// \a name.
    std::function<void(int folder, char const* name)> entry;

    /// Called for a subfolder once the walk is through with it, also where it could not be read; may be
    /// empty.
    std::function<void(int parent, char const* name)> folderDone;
};

/// Walks the folder \a path, itself not a link. Each folder is listed whole before its entries are visited,
/// so that a visitor may remove them; subfolders come after the other entries.
void walk(QByteArray const& path, Depth depth, Visitor const& visitor);

} // namespace FolderWalk
