#include "frmLogWindow.h"

#include "ConsumerSettings.h"
#include "GeneralSettingKeys.h"
#include "ui_frmLogWindow.h"

#include <QScrollBar>

namespace {
constexpr int kPollMs = 500;
} // namespace

QString frmLogWindow::EngineLogFile(quillon::SubscribeClient &client)
{
    namespace G = quillon::GeneralSettingKeys;
    return GetConsumerSetting(client, G::kLogFilePath, QString(), G::kConsumer, G::kSection);
}

frmLogWindow::frmLogWindow(const QString &logFile, QWidget *parent)
    : QWidget(parent, Qt::Window), ui(std::make_unique<Ui::frmLogWindow>()), m_tail(logFile)
{
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    ui->lblLogFile->setText(logFile.isEmpty() ? tr("The engine has not named its log file.") : logFile);
    connect(&m_poll, &QTimer::timeout, this, &frmLogWindow::readMore);
    if (!logFile.isEmpty()) {
        readMore();
        m_poll.start(kPollMs);
    }
}

frmLogWindow::~frmLogWindow() = default;

QString frmLogWindow::shownText() const
{
    return ui->txtLog->toPlainText();
}

void frmLogWindow::readMore()
{
    QString lines = m_tail.readNew();
    if (lines.isEmpty())
        return;
    lines.chop(1); // each block is a line already
    QScrollBar *bar = ui->txtLog->verticalScrollBar();
    const bool atEnd = bar->value() == bar->maximum();
    ui->txtLog->appendPlainText(lines);
    // Follow the end unless the user scrolled back to read.
    if (atEnd)
        bar->setValue(bar->maximum());
}
