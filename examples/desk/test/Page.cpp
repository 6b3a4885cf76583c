#include "Page.h"

#include <QRectF>
#include <algorithm>
#include <array>

namespace {

bool isVisible(QAccessibleInterface* part)
{
    return part->isValid() && !part->state().invisible;
}

void collect(QAccessibleInterface* part, std::vector<QAccessibleInterface*>& parts)
{
    if (part == nullptr || !isVisible(part)) {
        return;
    }
    parts.push_back(part);
    for (int child = 0; child < part->childCount(); ++child) {
        collect(part->child(child), parts);
    }
}

bool needsName(QAccessible::Role role)
{
    constexpr std::array roles = {
        QAccessible::Button,   QAccessible::EditableText, QAccessible::RadioButton, QAccessible::PageTab,
        QAccessible::ListItem, QAccessible::Link,         QAccessible::List,        QAccessible::Pane,
        QAccessible::Grouping, QAccessible::ProgressBar,  QAccessible::StatusBar,   QAccessible::Heading};
    return std::ranges::find(roles, role) != roles.end();
}

/// The part of \a item's scene rectangle that no clipping ancestor takes away.
QRectF shownRect(QQuickItem const* item)
{
    QRectF rect = item->mapRectToScene(item->boundingRect());
    for (QQuickItem const* above = item->parentItem(); above != nullptr; above = above->parentItem()) {
        if (above->clip()) {
            rect &= above->mapRectToScene(above->boundingRect());
        }
    }
    return rect;
}

/// What is wrong with the text \a item; empty when nothing is.
QString textFault(QQuickItem const* item)
{
    QString const text = item->property("text").toString();
    if (item->property("truncated").toBool()) {
        return QStringLiteral("\"%1\" is cut off").arg(text);
    }
    bool const isTooWide = item->property("contentWidth").toReal() > item->width() + 1;
    bool const isTooHigh = item->property("contentHeight").toReal() > item->height() + 1;
    return isTooWide || isTooHigh ? QStringLiteral("\"%1\" is larger than its place").arg(text) : QString();
}

void collectFaults(QQuickItem const* item, QRectF const& window, QStringList& faults)
{
    if (!item->isVisible() || item->opacity() == 0) {
        return;
    }
    bool const isText = item->inherits("QQuickText") && !item->property("text").toString().isEmpty();
    QRectF const rect = shownRect(item);
    if (isText && !rect.isEmpty()) {
        QString const fault = textFault(item);
        if (!fault.isEmpty()) {
            faults.append(fault);
        }
        if (rect.left() < window.left() - 1 || rect.right() > window.right() + 1 ||
            rect.bottom() > window.bottom() + 1) {
            faults.append(QStringLiteral("\"%1\" lies outside").arg(item->property("text").toString()));
        }
    }
    for (QQuickItem const* child : item->childItems()) {
        collectFaults(child, window, faults);
    }
}

} // namespace

namespace Page {

std::vector<QAccessibleInterface*> parts(QQuickWindow* window)
{
    // Controls learn of readers by this alone, and those that are new have not heard yet.
    QAccessible::setActive(true);
    std::vector<QAccessibleInterface*> parts;
    collect(QAccessible::queryAccessibleInterface(window), parts);
    return parts;
}

QAccessibleInterface* find(QQuickWindow* window, QAccessible::Role role, QString const& name)
{
    std::vector<QAccessibleInterface*> const all = parts(window);
    auto const found = std::ranges::find_if(all, [&](QAccessibleInterface* part) {
        return part->role() == role && part->text(QAccessible::Name).contains(name) &&
               !part->rect().isEmpty();
    });
    return found == all.end() ? nullptr : *found;
}

QString described(QQuickWindow* window)
{
    QString lines;
    for (QAccessibleInterface* part : parts(window)) {
        lines += QStringLiteral("%1 %2\n").arg(part->role()).arg(part->text(QAccessible::Name));
    }
    return lines;
}

QStringList faults(QQuickWindow* window)
{
    QStringList faults;
    for (QAccessibleInterface* part : parts(window)) {
        if (needsName(part->role()) && part->text(QAccessible::Name).isEmpty()) {
            faults.append(QStringLiteral("%1 without a name")
                              .arg(QString::fromLatin1(part->object()->metaObject()->className())));
        }
    }
    collectFaults(window->contentItem(), QRectF(QPointF(), window->size()), faults);
    return faults;
}

QStringList focusable(QQuickWindow* window)
{
    QStringList names;
    for (QAccessibleInterface* part : parts(window)) {
        auto const* const item = qobject_cast<QQuickItem*>(part->object());
        bool const isControl =
            part->role() == QAccessible::Button || part->role() == QAccessible::EditableText ||
            part->role() == QAccessible::RadioButton || part->role() == QAccessible::PageTab;
        if (isControl && item != nullptr && item->isEnabled() && item->activeFocusOnTab()) {
            names.append(part->text(QAccessible::Name));
        }
    }
    return names;
}

} // namespace Page
