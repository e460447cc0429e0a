#pragma once

#include <QDialog>
#include <QString>

#include <functional>

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
    void commitEditing();

    void reject() override;

private:
    /// What belongs to one side.
    struct Side {
        QCheckBox* lock;
        QSpinBox* field;
        std::function<void(int)> commit{}; ///< gives the controller a size
        bool typed{false};                 ///< a person typed in the field since the last commit
    };

    [[nodiscard]] Side addSide(QGridLayout* grid, const QString& title, const QString& name);
    void bindLongSide();
    void bindShortSide();
    void addButton(QGridLayout* grid);
    static void follow(Side& side);
    /// What was typed counts also where the field showed that number before: it may stand for a
    /// size that the field cannot show.
    static void commitTyped(Side& side);
    static void showSize(const Side& side, const QVariant& pixels);
    static void showLock(const Side& side, bool locked);

    CorvaneAppDelegate& m_controller;
    Side m_long{};
    Side m_short{};
};
