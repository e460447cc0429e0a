#include "CrashReportContents.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QTableWidget>
#include <QUrl>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

CrashReportContents::CrashReportContents(const QVariantMap& formValues,
                                         const QUrl& address,
                                         QWidget* parent)
    : QDialog(parent)
{
    setObjectName(u"reportContents"_s);
    setWindowTitle(tr("What Will Be Sent"));
    setWindowModality(Qt::WindowModal);
    auto* const where = new QLabel(destination(address), this);
    where->setObjectName(u"reportDestination"_s);
    where->setTextFormat(Qt::PlainText);
    where->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    where->setWordWrap(true);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    buttons->button(QDialogButtonBox::Close)->setDefault(true);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(where);
    layout->addWidget(makeTable(formValues), 1);
    layout->addWidget(buttons);
    resize(fontMetrics().averageCharWidth() * 95, fontMetrics().lineSpacing() * 26);
}

QString CrashReportContents::destination(const QUrl& address)
{
    const QString sent =
        address.userInfo().isEmpty()
            ? tr("Pressing Report sends these fields, and nothing else, to %1 and to no other "
                 "server.")
            : tr("Pressing Report sends these fields, the user name and the password of the "
                 "address (not shown here), and nothing else, to %1 and to no other server.");
    return sent.arg(address.toDisplayString(QUrl::RemoveUserInfo)) + u' ' +
           tr("As with every connection that server learns your network address. The date is that "
              "of the sending.");
}

QTableWidget* CrashReportContents::makeTable(const QVariantMap& formValues)
{
    auto* const table = new QTableWidget(static_cast<int>(formValues.size()), 2, this);
    table->setObjectName(u"reportFields"_s);
    table->setAccessibleName(tr("Fields of the report"));
    table->setHorizontalHeaderLabels({tr("Field"), tr("Value")});
    table->verticalHeader()->hide();
    table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    table->horizontalHeader()->setStretchLastSection(true);
    table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    table->setTabKeyNavigation(false);
    int row = 0;
    for (auto field = formValues.cbegin(); field != formValues.cend(); ++field, ++row) {
        table->setItem(row, 0, new QTableWidgetItem(field.key()));
        auto* const value = new QTableWidgetItem(shown(field.value()));
        // In full, also where a long word does not fit.
        value->setToolTip(value->text().toHtmlEscaped());
        table->setItem(row, 1, value);
    }
    table->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    return table;
}

QString CrashReportContents::shown(const QVariant& value)
{
    if (value.typeId() == QMetaType::Bool) {
        return value.toBool() ? u"1"_s : u"0"_s;
    }
    if (value.typeId() == QMetaType::QUrl) {
        const QFileInfo file(value.toUrl().toLocalFile());
        return tr("The file \"%1\" (%2)")
            .arg(file.fileName(), QLocale().formattedDataSize(file.size()));
    }
    return value.toString();
}
