#pragma once

#include <QObject>
#include <QString>

#include <mutex>

/// A label or text field as the controller knows it: a text that a face shows. No widget.
/// Threads: any may read and write; `stringValueChanged` is emitted on the writing thread after
/// the value is stored (faces connect with a queued connection).
class TextField final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TextField)
public:
    using QObject::QObject;

    void setStringValue(const QString& value);
    [[nodiscard]] QString stringValue() const;

signals:
    void stringValueChanged(const QString& value);

private:
    mutable std::mutex m_mutex;
    QString m_value;
};
