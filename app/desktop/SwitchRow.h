#pragma once

#include <QString>
#include <QWidget>

class QCheckBox;
class UserDefaults;

/// A check box for one setting that is on or off, and below it a line that says what it does.
/// It follows the setting and stores it when it is clicked. The check box is named as the key.
class SwitchRow final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SwitchRow)
public:
    struct Texts {
        QString title;
        QString hint;
    };

    /// `defaults` outlives the widget.
    SwitchRow(UserDefaults& defaults,
              const QString& key,
              const Texts& texts,
              QWidget* parent = nullptr);

private:
    void follow(const QString& changedKey);

    UserDefaults& m_defaults;
    const QString m_key;
    QCheckBox* m_box;
};
