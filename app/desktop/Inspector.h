#pragma once

#include "LibraryFacts.h"
#include "PhotoFigures.h"

#include <QTextBrowser>

#include <functional>

/// A panel that tells what the library knows of the selected photo or, of several, figures. All
/// text can be selected and copied; long words wrap. Reads no file. Main thread.
class Inspector final : public QTextBrowser
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Inspector)
public:
    explicit Inspector(QWidget* parent = nullptr);

    void showNothing();
    void showPhoto(const PhotoFacts& photo);
    void showFigures(const PhotoFigures& figures);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void changeEvent(QEvent* event) override;

private:
    /// Keeps what makes the text, since the text holds colours of the palette.
    void tell(std::function<QString()> text);

    std::function<QString()> m_text;
};
