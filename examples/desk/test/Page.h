#pragma once

#include <QAccessible>
#include <QQuickItem>
#include <QQuickWindow>
#include <QStringList>
#include <vector>

/// What is on a window, as somebody who sees it and somebody who has it read out finds it.
namespace Page {

/// The visible parts of \a window in the order in which they are read out.
[[nodiscard]] std::vector<QAccessibleInterface*> parts(QQuickWindow* window);

/// The first visible part of the kind \a role whose name contains \a name; null when there is none.
[[nodiscard]] QAccessibleInterface* find(QQuickWindow* window, QAccessible::Role role, QString const& name);

/// The kinds and names of all visible parts, a line each.
[[nodiscard]] QString described(QQuickWindow* window);

/// Everything that is wrong with what \a window shows: controls without a name, texts that are cut off, and
/// what lies outside. Each a sentence.
[[nodiscard]] QStringList faults(QQuickWindow* window);

/// The names of the controls that can have the focus, apart from the rows of lists.
[[nodiscard]] QStringList focusable(QQuickWindow* window);

} // namespace Page
