#include "app/mainwin/progress_window.h"

#include <QCoreApplication>
#include <QEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QThread>
#include <QVBoxLayout>

namespace qarvel::app {

ProgressWindow::ProgressWindow(QWidget* parent)
    : QDialog(parent),
      m_caption(new QLabel(this)),
      m_bar(new QProgressBar(this)),
      m_cancelButton(new QPushButton(tr("Cancel"), this)) {
    setObjectName(QStringLiteral("frmProcessing"));
    setModal(true);
    setMinimumWidth(360);
    m_caption->setObjectName(QStringLiteral("lblStatus"));
    m_bar->setObjectName(QStringLiteral("ProgressBar1"));
    m_cancelButton->setObjectName(QStringLiteral("cmdCancel"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_caption);
    layout->addWidget(m_bar);
    layout->addWidget(m_cancelButton, 0, Qt::AlignRight);
    connect(m_cancelButton, &QPushButton::clicked, this, &ProgressWindow::reject);
}

ProgressWindow::~ProgressWindow() = default;

bool ProgressWindow::Run(const QString& operation, const QStringList& stages, const Work& work,
                         bool cancellable) {
    m_stages = stages;
    m_captions.clear();
    m_cancel = false;
    m_cancellable = cancellable;
    m_cancelButton->setEnabled(cancellable);
    setWindowTitle(operation);
    m_caption->setText(operation);
    m_bar->setRange(0, stages.isEmpty() ? 0 : static_cast<int>(stages.size()));
    m_bar->setValue(0);

    bool result = false;
    const Progress progress = [this](const std::string& caption) {
        QMetaObject::invokeMethod(this, "ShowCaption", Qt::QueuedConnection,
                                  Q_ARG(QString, QString::fromStdString(caption)));
    };
    QThread* worker = QThread::create([&] { result = work(progress, m_cancel); });
    // finished() is queued to this thread, so it lands inside exec() even
    // when the work is over before the window is up.
    connect(worker, &QThread::finished, this, &QDialog::accept);
    m_running = true;
    worker->start();
    exec();
    worker->wait();
    delete worker;
    m_running = false;
    // Captions still queued behind finished() are taken in now.
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
    return result;
}

void ProgressWindow::reject() {
    if (!m_running) {
        QDialog::reject();
        return;
    }
    if (!m_cancellable) return;
    m_cancel = true;
    m_cancelButton->setEnabled(false);
    m_caption->setText(tr("Cancelling..."));
}

void ProgressWindow::ShowCaption(const QString& caption) {
    m_captions.push_back(caption);
    if (!m_cancel) m_caption->setText(caption);
    const auto index = m_stages.indexOf(caption);
    if (index >= 0) m_bar->setValue(static_cast<int>(index) + 1);
}

}  // namespace qarvel::app
