#pragma once

#include <QDialog>
#include <QString>

class CorvaneAppDelegate;
class QCheckBox;
class QGridLayout;
class QSpinBox;
class QVariant;

/// The sheet of the fixed output size: a field for the long and the short side in pixels, and for
/// each side whether it is locked. A side that is not locked is free: its field is disabled.
///
/// The sheet comes and goes by begin() and end() alone; its button, Escape and its window's close
/// box ask the controller to dismiss it.
class FixedSizeSheet final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FixedSizeSheet)
public:
    /// `controller` outlives the sheet.
    explicit FixedSizeSheet(CorvaneAppDelegate& controller, QWidget* parent);

    /// Shows the sheet, modal to its parent's window, and returns.
    void begin();
    void end();
    /// Ends editing: a value being typed in either field reaches the controller.
    void commitEditing() const;

    void reject() override;

private:
    /// What belongs to one side.
    struct Side {
        QCheckBox* lock;
        QSpinBox* field;
    };

    [[nodiscard]] Side addSide(QGridLayout* grid, const QString& title, const QString& name);
    void bindLongSide();
    void bindShortSide();
    void addButton(QGridLayout* grid);
    static void showSize(const Side& side, const QVariant& pixels);
    static void showLock(const Side& side, bool locked);

    CorvaneAppDelegate& m_controller;
    Side m_long{};
    Side m_short{};
};
