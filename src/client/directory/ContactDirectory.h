#pragma once

#include <QAbstractListModel>
#include <QByteArray>
#include <QFuture>
#include <QList>
#include <QLocale>
#include <QString>
#include <client/ContactCard.h>
#include <client/softphoneclient_export.h>
#include <memory>
#include <optional>
#include <vector>

namespace Softphone {

class DirectoryStore;

/// The contacts that a client shows, searches and saves, as a model for a list.
///
/// Its rows are the cards that match filter(): all of them in the order of the locale without a filter, else
/// the best matches first. Each card has an id, by which it is merged: one that comes again takes the place
/// of the former as a whole, and a card without an id gets one made from its content, so that nothing is
/// there twice.
///
/// Additions, changes and removals keep persistent indexes: one change of rows is one signal, and a load that
/// scatters its cards inserts one block and moves it into place by one change of layout. A new filter is one
/// reset.
///
/// Belongs to the thread that made it. Nothing is parsed as a telephone number before caller() is asked.
///
/// \code
/// Softphone::ContactDirectory directory;
/// directory.loadFile(path);
/// directory.setFilter(QStringLiteral("luc bri"));
/// listView->setModel(&directory);
/// \endcode
class SOFTPHONECLIENT_EXPORT ContactDirectory : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(QString filter READ filter WRITE setFilter NOTIFY filterChanged)
    Q_PROPERTY(int total READ total NOTIFY totalChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    Q_PROPERTY(QString region READ region WRITE setRegion NOTIFY regionChanged)

public:
    /// What a row holds, under the names in roleNames(): "card", "contactId", "name" and so on.
    /// Qt::DisplayRole is the name.
    ///
    /// A hits role holds what the filter matched, a QVariantList of QVariantMaps with "position" and "length"
    /// in the text of that role, and for numbers "index", the place in NumbersRole.
    enum Role {
        CardRole = Qt::UserRole + 1, ///< a ContactCard
        IdRole,
        NameRole, ///< ContactCard::displayName()
        InitialsRole,
        CompanyRole,
        DepartmentRole,
        NumbersRole, ///< a QStringList
        EmailsRole,  ///< a QStringList
        NameHitsRole,
        CompanyHitsRole,
        NumberHitsRole,
        DepartmentHitsRole
    };
    Q_ENUM(Role)

    /// Where a text is wrong, and how.
    struct LoadError
    {
        int line;     ///< from 1; 0 for a file that cannot be read
        int column;   ///< from 1, in characters; 0 for a file that cannot be read
        QString text; ///< for a person to read

        /// Whether two errors are the same.
        bool operator==(LoadError const& other) const = default;
    };

    /// The outcome of a load.
    struct LoadReport
    {
        int added;               ///< cards that were not there
        int updated;             ///< cards that came again with another content
        QList<LoadError> errors; ///< the first thousand
    };

    /// An empty directory.
    explicit ContactDirectory(QObject* parent = nullptr);
    ~ContactDirectory() override;

    /// Merges the cards of \a json, UTF-8 text with one object or an array of them as ContactCard::fromJson()
    /// reads one. Where the text is wrong, the report says so, and the other entries are loaded.
    ///
    /// Of names that an object has twice the last one counts. Text nested deeper than 1024 is wrong. Linear,
    /// apart from the order of the cards.
    LoadReport load(QByteArray const& json);
    /// load() of the file at \a path. Blocks while it is read.
    LoadReport loadFile(QString const& path);
    /// loadFile() without blocking: the file is read and prepared by another thread, and its cards are merged
    /// when the event loop of this one runs; its report is then there. An empty directory takes them over as
    /// they are; into one that has cards they are merged card by card, which takes this thread time in
    /// proportion to their number. The future is cancelled when the
    /// directory is deleted first. What is loaded at the same time is merged in the order in which it becomes
    /// ready.
    [[nodiscard]] QFuture<ContactDirectory::LoadReport> startLoadingFile(QString const& path);

    /// Writes all cards to the file at \a path, an array that load() reads, in place of the one that is
    /// there, which stays as it is when anything fails, as on a full disk. Blocks.
    ///
    /// \return whether the new file is there as a whole
    [[nodiscard]] Q_INVOKABLE bool saveFile(QString const& path) const;

    /// Puts \a card in, or in place of the one with its id. Returns whether something changed.
    Q_INVOKABLE bool addOrUpdate(Softphone::ContactCard const& card);
    /// Takes out the card with the id \a id. Returns whether there was one.
    Q_INVOKABLE bool removeCard(QString const& id);

    /// The number of cards, whatever the filter.
    [[nodiscard]] int total() const;
    /// The number of rows.
    [[nodiscard]] int count() const { return rowCount(); }
    /// The row of the card with the id \a id; -1 when there is none or the filter leaves it out.
    [[nodiscard]] Q_INVOKABLE int row(QString const& id) const;
    /// The card with the id \a id, whatever the filter.
    [[nodiscard]] std::optional<ContactCard> card(QString const& id) const;

    /// The filter, as it was set.
    [[nodiscard]] QString filter() const;
    /// Shows the cards that match \a words, see SearchFilter; the fields are the name, the company, the
    /// department and each number. Without words all cards are shown.
    void setFilter(QString const& words);

    /// The card that \a number belongs to; nothing when there is none.
    ///
    /// Both sides are compared in their E.164 forms: a national number of the region is the same as its
    /// international form. A short number or an extension of the PBX is found only by exactly its digits and
    /// never as the end of a longer one, and a number with an extension only by that extension. Of several
    /// cards the first in the order of the locale.
    ///
    /// What lies in the directory is parsed when it is a candidate for the first time.
    [[nodiscard]] std::optional<ContactCard> caller(QString const& number) const;
    /// Sets the region of national numbers, two letters of ISO 3166; "IT" unless set.
    void setRegion(QString const& region);
    /// The region of national numbers.
    [[nodiscard]] QString region() const;

    /// Sorts by the rules of \a locale; those of the default locale hold until it is set.
    void setLocale(QLocale const& locale);

    /// The number of rows; 0 below a valid \a parent.
    [[nodiscard]] int rowCount(QModelIndex const& parent = {}) const override;
    /// What the row of \a index holds in \a role.
    [[nodiscard]] QVariant data(QModelIndex const& index, int role = Qt::DisplayRole) const override;
    /// The names of the roles.
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    /// filter() has changed.
    void filterChanged();
    /// total() has changed.
    void totalChanged();
    /// count() has changed.
    void countChanged();
    /// region() is another.
    void regionChanged();

private:
    struct Counts;

    LoadReport merge(struct DirectoryBatch&& batch);
    LoadReport takeOver(struct LoadedStore&& loaded);
    void reconcile(std::vector<int> const& changed);
    void takeOut(std::vector<int> const& target);
    void putIn(std::vector<int> const& target);
    void putInOrder(std::vector<int> const& target);
    void layOut(std::vector<int> const& target);
    void announce(std::vector<int> const& changed, std::vector<char> const& before);
    void setRows(std::vector<int> rows);
    [[nodiscard]] std::vector<char> shown() const;
    [[nodiscard]] QVariantList hits(int card, int role) const;

    std::unique_ptr<DirectoryStore> m_store;
    std::vector<int> m_rows;          ///< the cards that are shown
    mutable std::vector<int> m_rowOf; ///< of each card that is shown; empty when it has to be rebuilt
    QString m_filter;
    QString m_region;
};

} // namespace Softphone
