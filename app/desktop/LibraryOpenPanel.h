#pragma once

#include "Presenter.h"

#include <QFileDialog>
#include <QString>

#include <optional>

/// An open panel in which a photo library counts as one thing: it is chosen, never entered.
///
/// What may be chosen is what OpenPanel says; a library package is a file in its sense. A folder
/// that may not be chosen is entered when "Open" is pressed on it.
class LibraryOpenPanel final : public QFileDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LibraryOpenPanel)
public:
    LibraryOpenPanel(const OpenPanel& request, QWidget* parent);

    /// Absolute; empty while nothing was chosen.
    [[nodiscard]] const QString& chosenPath() const { return m_chosenPath; }

    /// Lets the person choose a library, starting in a folder or beside a library, and waits.
    /// Nothing when it was cancelled.
    [[nodiscard]] static std::optional<QString> choose(QWidget* parent, const QString& start);

    void accept() override;

private:
    void addMessage();
    void showChoosableFiles();
    void startIn(const QString& directory);
    /// Chooses the item, or enters it.
    void take(const QString& path);
    /// A library that the dialog has just entered is chosen instead.
    void refuseToEnter(const QString& directory);
    void updateOpenButton();
    [[nodiscard]] bool isPackage(const QString& path) const;
    [[nodiscard]] bool mayChoose(const QString& path) const;

    const OpenPanel m_request;
    QString m_chosenPath;
};
