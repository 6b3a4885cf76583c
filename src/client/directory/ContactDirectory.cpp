#include "ContactDirectory.h"

#include "DirectoryJson_p.h"
#include "DirectoryStore_p.h"

#include <QFile>
#include <QFutureWatcher>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPointer>
#include <QPromise>
#include <QSaveFile>
#include <QThreadPool>
#include <algorithm>
#include <utility>

namespace Softphone {

/// What another thread has loaded: cards that are merged, sorted and ready to be searched.
struct LoadedStore
{
    std::unique_ptr<DirectoryStore> store;
    ContactDirectory::LoadReport report;
};

namespace {

// Fields of a filter, see searchFields().
constexpr int nameField = 0;
constexpr int companyField = 1;
constexpr int departmentField = 2;
constexpr int firstNumberField = 3;

DirectoryBatch readBatch(QByteArray const& json, QLocale const& locale)
{
    DirectoryEntries entries = readDirectory(json);
    DirectoryBatch batch = DirectoryStore::prepare(std::move(entries.cards), locale);
    batch.errors = std::move(entries.errors);
    return batch;
}

DirectoryBatch readFile(QString const& path, QLocale const& locale)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {{}, {{0, 0, file.errorString()}}};
    }
    QByteArray const json = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        return {{}, {{0, 0, file.errorString()}}};
    }
    return readBatch(json, locale);
}

LoadedStore loadStore(QString const& path, QLocale const& locale)
{
    DirectoryBatch batch = readFile(path, locale);
    auto store = std::make_unique<DirectoryStore>();
    store->setLocale(locale);
    DirectoryStore::Changes const changes = store->merge(std::move(batch.cards));
    return {std::move(store),
            {changes.added, static_cast<int>(changes.updated.size()), std::move(batch.errors)}};
}

bool isRun(std::vector<int> const& rows)
{
    return rows.empty() || rows.back() - rows.front() + 1 == static_cast<int>(rows.size());
}

/// The rows of \a cards that \a mark holds or, if \a marked is false, does not hold.
std::vector<int> rowsOf(std::vector<int> const& cards, std::vector<char> const& mark, bool marked)
{
    std::vector<int> rows;
    for (int row = 0; int const card : cards) {
        if ((mark[static_cast<std::size_t>(card)] != 0) == marked) {
            rows.push_back(row);
        }
        ++row;
    }
    return rows;
}

QVariantMap place(SearchFilter::Hit const& hit)
{
    return {{QStringLiteral("position"), hit.position}, {QStringLiteral("length"), hit.length}};
}

} // namespace

/// Announces counts that have changed since it was made.
struct ContactDirectory::Counts
{
    explicit Counts(ContactDirectory& of)
        : directory(&of)
        , total(of.total())
        , count(of.count())
    {
    }
    ~Counts()
    {
        // A slot may delete the directory.
        if (directory->total() != total) {
            Q_EMIT directory->totalChanged();
        }
        if (directory && directory->count() != count) {
            Q_EMIT directory->countChanged();
        }
    }
    Q_DISABLE_COPY_MOVE(Counts)

    QPointer<ContactDirectory> directory;
    int total;
    int count;
};

ContactDirectory::ContactDirectory(QObject* parent)
    : QAbstractListModel(parent)
    , m_store(std::make_unique<DirectoryStore>())
    , m_region(QStringLiteral("IT"))
{
}

ContactDirectory::~ContactDirectory() = default;

ContactDirectory::LoadReport ContactDirectory::load(QByteArray const& json)
{
    return merge(readBatch(json, m_store->locale()));
}

ContactDirectory::LoadReport ContactDirectory::loadFile(QString const& path)
{
    return merge(readFile(path, m_store->locale()));
}

QFuture<ContactDirectory::LoadReport> ContactDirectory::startLoadingFile(QString const& path)
{
    auto const reading = std::make_shared<QPromise<LoadedStore>>();
    auto const report = std::make_shared<QPromise<LoadReport>>();
    report->start();
    auto* const watcher = new QFutureWatcher<LoadedStore>(this);
    // The promise lives as long as the connection: deleted with this, it cancels the future.
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher, report] {
        watcher->deleteLater();
        report->addResult(takeOver(watcher->future().takeResult()));
        report->finish();
    });
    watcher->setFuture(reading->future());
    QThreadPool::globalInstance()->start([reading, path, locale = m_store->locale()] {
        reading->start();
        reading->addResult(loadStore(path, locale));
        reading->finish();
    });
    return report->future();
}

ContactDirectory::LoadReport ContactDirectory::merge(DirectoryBatch&& batch)
{
    Counts const counts(*this);
    DirectoryStore::Changes const changes = m_store->merge(std::move(batch.cards));
    reconcile(changes.updated);
    return {changes.added, static_cast<int>(changes.updated.size()), std::move(batch.errors)};
}

ContactDirectory::LoadReport ContactDirectory::takeOver(LoadedStore&& loaded)
{
    // The order of another language, if it was switched meanwhile.
    if (loaded.store->locale() != m_store->locale()) {
        loaded.store->setLocale(m_store->locale());
    }
    if (m_store->count() != 0) {
        return merge({loaded.store->takeCards(), std::move(loaded.report.errors)});
    }
    Counts const counts(*this);
    m_store = std::move(loaded.store);
    m_store->setRegion(m_region);
    reconcile({});
    return std::move(loaded.report);
}

bool ContactDirectory::saveFile(QString const& path) const
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    qint64 written = 0;
    auto const write = [&](QByteArray const& bytes) {
        written += bytes.size();
        return file.write(bytes) == bytes.size();
    };
    bool good = write("[");
    for (char const* separator = "\n"; int const card : m_store->order()) {
        QJsonDocument const entry(m_store->card(card).toJson());
        good = good && write(std::exchange(separator, ",\n") + entry.toJson(QJsonDocument::Compact));
    }
    good = good && write("\n]\n") && file.flush() && file.error() == QFileDevice::NoError;
    // What a full disk cuts off is not always an error, and commit() would put the rest in place.
    if (!good || file.size() != written) {
        file.cancelWriting();
    }
    return file.commit();
}

bool ContactDirectory::addOrUpdate(ContactCard const& card)
{
    LoadReport const report = merge(DirectoryStore::prepare({card}, m_store->locale()));
    return report.added + report.updated > 0;
}

bool ContactDirectory::removeCard(QString const& id)
{
    int const card = m_store->find(id);
    if (card < 0) {
        return false;
    }
    Counts const counts(*this);
    m_store->takeOut(card);
    reconcile({});
    m_store->forget(card);
    return true;
}

int ContactDirectory::total() const
{
    return m_store->count();
}

int ContactDirectory::row(QString const& id) const
{
    int const card = m_store->find(id);
    if (card < 0) {
        return -1;
    }
    if (m_rowOf.size() != m_store->bound()) {
        m_rowOf.assign(m_store->bound(), -1);
        for (int row = 0; int const shown : m_rows) {
            m_rowOf[static_cast<std::size_t>(shown)] = row++;
        }
    }
    return m_rowOf[static_cast<std::size_t>(card)];
}

std::optional<ContactCard> ContactDirectory::card(QString const& id) const
{
    int const card = m_store->find(id);
    return card < 0 ? std::nullopt : std::optional(m_store->card(card));
}

QString ContactDirectory::filter() const
{
    return m_filter;
}

void ContactDirectory::setFilter(QString const& words)
{
    if (words == m_filter) {
        return;
    }
    {
        Counts const counts(*this);
        std::vector<int> rows = m_store->search(SearchFilter(words));
        beginResetModel();
        m_filter = words;
        setRows(std::move(rows));
        endResetModel();
    }
    Q_EMIT filterChanged();
}

std::optional<ContactCard> ContactDirectory::caller(QString const& number) const
{
    int const card = m_store->caller(number);
    return card < 0 ? std::nullopt : std::optional(m_store->card(card));
}

void ContactDirectory::setRegion(QString const& region)
{
    if (region == m_region) {
        return;
    }
    m_region = region;
    m_store->setRegion(region);
    Q_EMIT regionChanged();
}

QString ContactDirectory::region() const
{
    return m_region;
}

void ContactDirectory::setLocale(QLocale const& locale)
{
    m_store->setLocale(locale);
    reconcile({});
}

int ContactDirectory::rowCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QVariant ContactDirectory::data(QModelIndex const& index, int role) const
{
    if (index.model() != this || index.row() >= rowCount()) {
        return {};
    }
    int const number = m_rows[static_cast<std::size_t>(index.row())];
    ContactCard const& card = m_store->card(number);
    switch (role) {
    case CardRole:
        return QVariant::fromValue(card);
    case IdRole:
        return card.id;
    case Qt::DisplayRole:
    case NameRole:
        return card.displayName();
    case InitialsRole:
        return card.initials();
    case CompanyRole:
        return card.company;
    case DepartmentRole:
        return card.department;
    case NumbersRole:
        return card.numbers();
    case EmailsRole:
        return card.emails();
    case NameHitsRole:
    case CompanyHitsRole:
    case DepartmentHitsRole:
    case NumberHitsRole:
        return hits(number, role);
    default:
        return {};
    }
}

QVariantList ContactDirectory::hits(int card, int role) const
{
    QVariantList found;
    QList<SearchFilter::Hit> const all = SearchFilter(m_filter).hits(searchFields(m_store->card(card)));
    for (SearchFilter::Hit const& hit : all) {
        if (role == NumberHitsRole && hit.field >= firstNumberField) {
            QVariantMap one = place(hit);
            one.insert(QStringLiteral("index"), hit.field - firstNumberField);
            found.append(one);
        } else if ((role == NameHitsRole && hit.field == nameField) ||
                   (role == CompanyHitsRole && hit.field == companyField) ||
                   (role == DepartmentHitsRole && hit.field == departmentField)) {
            found.append(place(hit));
        }
    }
    return found;
}

QHash<int, QByteArray> ContactDirectory::roleNames() const
{
    QHash<int, QByteArray> names = QAbstractListModel::roleNames();
    names.insert({{CardRole, "card"},
                  {IdRole, "contactId"},
                  {NameRole, "name"},
                  {InitialsRole, "initials"},
                  {CompanyRole, "company"},
                  {DepartmentRole, "department"},
                  {NumbersRole, "numbers"},
                  {EmailsRole, "emails"},
                  {NameHitsRole, "nameHits"},
                  {CompanyHitsRole, "companyHits"},
                  {NumberHitsRole, "numberHits"},
                  {DepartmentHitsRole, "departmentHits"}});
    return names;
}

void ContactDirectory::setRows(std::vector<int> rows)
{
    m_rows = std::move(rows);
    m_rowOf.clear();
}

/// Which cards have a row.
std::vector<char> ContactDirectory::shown() const
{
    std::vector<char> shown(m_store->bound(), 0);
    for (int const card : m_rows) {
        shown[static_cast<std::size_t>(card)] = 1;
    }
    return shown;
}

/// Makes the rows those that the filter finds now, with the least signals, and tells which of the cards \a
/// changed.
void ContactDirectory::reconcile(std::vector<int> const& changed)
{
    std::vector<int> const target = m_store->search(SearchFilter(m_filter));
    std::vector<char> const before = shown();
    takeOut(target);
    putIn(target);
    putInOrder(target);
    announce(changed, before);
    m_rowOf.clear(); // there may be more cards now, though none is shown
}

/// Removes the rows that \a target does not have, as one block.
void ContactDirectory::takeOut(std::vector<int> const& target)
{
    std::vector<char> wanted(m_store->bound(), 0);
    for (int const card : target) {
        wanted[static_cast<std::size_t>(card)] = 1;
    }
    std::vector<int> gone = rowsOf(m_rows, wanted, false);
    if (gone.empty()) {
        return;
    }
    if (!isRun(gone)) {
        std::vector<int> blocks = m_rows;
        std::stable_partition(blocks.begin(), blocks.end(),
                              [&](int card) { return wanted[static_cast<std::size_t>(card)] != 0; });
        layOut(blocks);
        gone = rowsOf(m_rows, wanted, false);
    }
    beginRemoveRows({}, gone.front(), gone.back());
    std::vector<int> rows = m_rows;
    rows.erase(rows.begin() + gone.front(), rows.begin() + gone.back() + 1);
    setRows(std::move(rows));
    endRemoveRows();
}

/// Inserts the rows of \a target that are not there, as one block: in its place, or at the end if they have
/// no one place.
void ContactDirectory::putIn(std::vector<int> const& target)
{
    std::vector<int> const fresh = rowsOf(target, shown(), false);
    if (fresh.empty()) {
        return;
    }
    int const first = isRun(fresh) ? fresh.front() : static_cast<int>(m_rows.size());
    beginInsertRows({}, first, first + static_cast<int>(fresh.size()) - 1);
    std::vector<int> rows(m_rows.begin(), m_rows.begin() + first);
    for (int const row : fresh) {
        rows.push_back(target[static_cast<std::size_t>(row)]);
    }
    rows.insert(rows.end(), m_rows.begin() + first, m_rows.end());
    setRows(std::move(rows));
    endInsertRows();
}

/// Puts the rows into the order of \a target, which has the same cards: one moves, or the layout changes.
void ContactDirectory::putInOrder(std::vector<int> const& target)
{
    auto const [from, to] = std::ranges::mismatch(m_rows, target);
    if (from == m_rows.end()) {
        return;
    }
    auto const first = static_cast<int>(from - m_rows.begin());
    auto last = static_cast<int>(m_rows.size()) - 1;
    while (m_rows[static_cast<std::size_t>(last)] == target[static_cast<std::size_t>(last)]) {
        --last;
    }
    auto const at = [](auto const& rows, int row) { return rows.begin() + row; };
    bool const down = std::equal(at(m_rows, first + 1), at(m_rows, last + 1), at(target, first));
    bool const up = std::equal(at(m_rows, first), at(m_rows, last), at(target, first + 1));
    if (!down && !up) {
        layOut(target);
        return;
    }
    int const source = down ? first : last;
    int const destination = down ? last + 1 : first;
    beginMoveRows({}, source, source, {}, destination);
    setRows(target);
    endMoveRows();
}

/// Puts the rows into the order of \a target as a change of layout.
void ContactDirectory::layOut(std::vector<int> const& target)
{
    if (target == m_rows) {
        return;
    }
    Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
    QModelIndexList const before = persistentIndexList();
    std::vector<int> rowOf(m_store->bound(), -1);
    for (int row = 0; int const card : target) {
        rowOf[static_cast<std::size_t>(card)] = row++;
    }
    QModelIndexList after;
    for (QModelIndex const& old : before) {
        int const card = m_rows[static_cast<std::size_t>(old.row())];
        after.append(index(rowOf[static_cast<std::size_t>(card)]));
    }
    setRows(target);
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged({}, VerticalSortHint);
}

/// Announces that the cards \a changed have changed, as far as they were shown \a before: one signal for each
/// run of rows.
void ContactDirectory::announce(std::vector<int> const& changed, std::vector<char> const& before)
{
    if (changed.empty()) {
        return;
    }
    std::vector<char> marked(m_store->bound(), 0);
    for (int const card : changed) {
        auto const number = static_cast<std::size_t>(card);
        marked[number] = before[number];
    }
    std::vector<int> const rows = rowsOf(m_rows, marked, true);
    for (std::size_t first = 0; first < rows.size();) {
        std::size_t last = first;
        while (last + 1 < rows.size() && rows[last + 1] == rows[last] + 1) {
            ++last;
        }
        Q_EMIT dataChanged(index(rows[first]), index(rows[last]));
        first = last + 1;
    }
}

} // namespace Softphone
