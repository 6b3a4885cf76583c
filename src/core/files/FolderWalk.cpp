#include "FolderWalk_p.h"

#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

class Descriptor
{
public:
    explicit Descriptor(int number)
        : m_number(number)
    {
    }

    ~Descriptor()
    {
        if (isOpen()) {
            ::close(m_number);
        }
    }

    Descriptor(Descriptor&& other) noexcept
        : m_number(std::exchange(other.m_number, -1))
    {
    }

    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }

    [[nodiscard]] bool isOpen() const { return m_number >= 0; }
    [[nodiscard]] int number() const { return m_number; }
    [[nodiscard]] int release() { return std::exchange(m_number, -1); }

private:
    int m_number;
};

Descriptor openFolder(int parent, char const* name)
{
    return Descriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

struct Listing
{
    std::vector<std::string> subfolders;
    std::vector<std::string> others;
};

bool isFolder(int parent, dirent const& entry)
{
    if (entry.d_type != DT_UNKNOWN) {
        return entry.d_type == DT_DIR;
    }
    struct stat status
    {
    };
    return ::fstatat(parent, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
}

Listing list(Descriptor const& folder)
{
    struct Closer
    {
        void operator()(DIR* stream) const { ::closedir(stream); }
    };
    Listing listing;
    // The stream takes a descriptor of its own: closing it must not close the folder.
    int const number = openFolder(folder.number(), ".").release();
    std::unique_ptr<DIR, Closer> const stream(number < 0 ? nullptr : ::fdopendir(number));
    while (dirent const* const entry = stream ? ::readdir(stream.get()) : nullptr) {
        std::string_view const name(entry->d_name);
        if (name == "." || name == "..") {
            continue;
        }
        auto& names = isFolder(folder.number(), *entry) ? listing.subfolders : listing.others;
        names.emplace_back(name);
    }
    return listing;
}

/// A folder that the walk is inside of.
struct Level
{
    std::string name;
    dev_t device = 0;
    ino_t inode = 0;
    std::vector<std::string> pending;
};

class Walk
{
public:
    Walk(Descriptor top, FolderWalk::Depth depth, FolderWalk::Visitor const& visitor)
        : m_current(std::move(top))
        , m_depth(depth)
        , m_visitor(visitor)
    {
        enter({});
    }

    void run()
    {
        while (!m_levels.empty()) {
            if (m_levels.back().pending.empty()) {
                leave();
            } else {
                std::string const name = std::move(m_levels.back().pending.back());
                m_levels.back().pending.pop_back();
                descend(name);
            }
        }
    }

private:
    /// Visits the entries of the current folder and keeps its subfolders for later.
    void enter(std::string const& name)
    {
        struct stat status
        {
        };
        ::fstat(m_current.number(), &status);
        Listing listing = list(m_current);
        for (std::string const& entry : listing.others) {
            m_visitor.entry(m_current.number(), entry.c_str());
        }
        if (m_depth == FolderWalk::Depth::OneFolder) {
            listing.subfolders.clear();
        }
        m_levels.push_back({name, status.st_dev, status.st_ino, std::move(listing.subfolders)});
    }

    void descend(std::string const& name)
    {
        Descriptor child = openFolder(m_current.number(), name.c_str());
        // A folder that does not let the walk out again is not gone into.
        if (!child.isOpen() || !parentOf(child, m_levels.back()).isOpen()) {
            folderDone(name);
            return;
        }
        m_current = std::move(child);
        enter(name);
    }

    void leave()
    {
        std::string const name = std::move(m_levels.back().name);
        m_levels.pop_back();
        if (m_levels.empty()) {
            return;
        }
        Descriptor parent = parentOf(m_current, m_levels.back());
        if (!parent.isOpen()) {
            m_levels.clear();
            return;
        }
        m_current = std::move(parent);
        folderDone(name);
    }

    /// The folder above \a child, if that is still \a expected: when another process has moved \a child
    /// meanwhile, ".." is a place that nobody asked to walk.
    static Descriptor parentOf(Descriptor const& child, Level const& expected)
    {
        Descriptor parent = openFolder(child.number(), "..");
        struct stat status
        {
        };
        bool const same = parent.isOpen() && ::fstat(parent.number(), &status) == 0 &&
                          status.st_dev == expected.device && status.st_ino == expected.inode;
        return same ? std::move(parent) : Descriptor(-1);
    }

    void folderDone(std::string const& name) const
    {
        if (m_visitor.folderDone) {
            m_visitor.folderDone(m_current.number(), name.c_str());
        }
    }

    Descriptor m_current;
    FolderWalk::Depth m_depth;
    FolderWalk::Visitor const& m_visitor;
    std::vector<Level> m_levels;
};

} // namespace

void FolderWalk::walk(QByteArray const& path, Depth depth, Visitor const& visitor)
{
    Descriptor top = openFolder(AT_FDCWD, path.constData());
    if (top.isOpen()) {
        Walk(std::move(top), depth, visitor).run();
    }
}
