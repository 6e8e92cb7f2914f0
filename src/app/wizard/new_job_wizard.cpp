#include "app/wizard/new_job_wizard.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <cmath>

#include "app/wizard/coordinate_entry.h"
#include "app/wizard/new_job_pages.h"
#include "spacing/class_codes.h"
#include "jobs/job_file.h"

namespace qarvel::app {

namespace {

constexpr int kFirstChannel = 200;
constexpr int kLastChannel = 300;
constexpr double kFirstMhz = 87.9;
constexpr double kMhzPerChannel = 0.2;
constexpr int kMaxScanRangeKm = 2000;
constexpr const char* kDefaultClass = "A";

// The class texts of the lists, class index order ("L2" ... "D").
QStringList ClassTexts() {
    QStringList texts;
    for (std::size_t i = 1; i < spacing::ClassName.size(); ++i) {
        texts << QString::fromStdString(spacing::ClassName[i]);
    }
    return texts;
}

// A job name usable as a file name: not empty, no folder separators.
bool ValidJobName(const QString& name) {
    const QString trimmed = name.trimmed();
    return !trimmed.isEmpty() && !trimmed.contains(QLatin1Char('/')) && !trimmed.contains(QLatin1Char('\\')) &&
           trimmed != QStringLiteral(".") && trimmed != QStringLiteral("..");
}

}  // namespace

double ChannelFrequency(int channel) { return kFirstMhz + kMhzPerChannel * (channel - kFirstChannel); }

int FrequencyChannel(double mhz) {
    if (!std::isfinite(mhz)) return 0;
    const long channel = std::lround((mhz - kFirstMhz) / kMhzPerChannel) + kFirstChannel;
    if (channel < kFirstChannel || channel > kLastChannel) return 0;
    return static_cast<int>(channel);
}

NewJobWizard::NewJobWizard(std::filesystem::path jobFolder, QWidget* parent)
    : QWizard(parent), m_jobFolder(std::move(jobFolder)) {
    setObjectName(QStringLiteral("frmNewJob"));
    setWindowTitle(tr("New Job"));
    setWizardStyle(QWizard::ClassicStyle);
    addPage(MakeLocationPage());
    addPage(MakeStationPage());
    addPage(MakeScanPage());
}

QWizardPage* NewJobWizard::MakeLocationPage() {
    auto* page = new CheckedPage([this] {
        const auto lat = m_lat->Value();
        const auto lon = m_lon->Value();
        if (!lat || !lon) return tr("Enter the latitude and longitude of the target.");
        if (!jobs::ValidJobLocation(*lat, *lon)) {
            return tr("The target must lie between 76 degrees south and 76 degrees north.");
        }
        return QString();
    });
    page->setObjectName(QStringLiteral("pageLocation"));
    page->setTitle(tr("Target Location"));
    m_lat = new CoordinateEntry(CoordinateAxis::Latitude, QStringLiteral("Lat"), page);
    m_lon = new CoordinateEntry(CoordinateAxis::Longitude, QStringLiteral("Lon"), page);
    m_decimal = new QRadioButton(tr("Decimal degrees"), page);
    m_decimal->setObjectName(QStringLiteral("optDecimal"));
    m_dms = new QRadioButton(tr("Degrees, minutes, seconds"), page);
    m_dms->setObjectName(QStringLiteral("optDMS"));
    auto* mode = new QButtonGroup(page);
    mode->addButton(m_decimal);
    mode->addButton(m_dms);
    m_decimal->setChecked(true);
    connect(m_decimal, &QRadioButton::toggled, this, [this](bool decimal) {
        m_lat->SetDecimal(decimal);
        m_lon->SetDecimal(decimal);
    });
    connect(m_lat, &CoordinateEntry::changed, page, &CheckedPage::Recheck);
    connect(m_lon, &CoordinateEntry::changed, page, &CheckedPage::Recheck);

    auto* form = new QFormLayout;
    form->addRow(m_decimal);
    form->addRow(m_dms);
    form->addRow(tr("Latitude:"), m_lat);
    form->addRow(tr("Longitude:"), m_lon);
    auto* layout = new QVBoxLayout(page);
    layout->addLayout(form);
    layout->addStretch();
    layout->addWidget(page->Reason());
    return page;
}

QWizardPage* NewJobWizard::MakeStationPage() {
    auto* page = new CheckedPage([this] {
        if (!jobs::ParseJobChannel(std::to_string(m_channel->value()), nullptr)) {
            return tr("The channel must lie between 200 and 300.");
        }
        if (spacing::ClassIndex(m_class->currentText().toStdString()) < 0) return tr("Choose a class.");
        return QString();
    });
    page->setObjectName(QStringLiteral("pageStation"));
    page->setTitle(tr("Channel and Class"));
    m_channel = new QSpinBox(page);
    m_channel->setObjectName(QStringLiteral("txtChannel"));
    m_channel->setRange(kFirstChannel, kLastChannel);
    m_frequency = new QDoubleSpinBox(page);
    m_frequency->setObjectName(QStringLiteral("txtFrequency"));
    m_frequency->setDecimals(1);
    m_frequency->setSingleStep(kMhzPerChannel);
    m_frequency->setRange(kFirstMhz, ChannelFrequency(kLastChannel));
    m_frequency->setSuffix(tr(" MHz"));
    m_class = new QComboBox(page);
    m_class->setObjectName(QStringLiteral("cboClass"));
    m_class->addItems(ClassTexts());
    m_class->setCurrentText(QString::fromLatin1(kDefaultClass));
    m_intlClass = new QComboBox(page);
    m_intlClass->setObjectName(QStringLiteral("cboIClass"));
    m_intlClass->addItem(QString());
    m_intlClass->addItems(ClassTexts());
    connect(m_channel, &QSpinBox::valueChanged, this, &NewJobWizard::SyncFrequency);
    connect(m_frequency, &QDoubleSpinBox::valueChanged, this, &NewJobWizard::SyncChannel);
    connect(m_channel, &QSpinBox::valueChanged, page, &CheckedPage::Recheck);
    connect(m_class, &QComboBox::currentTextChanged, page, &CheckedPage::Recheck);
    SyncFrequency(m_channel->value());

    auto* form = new QFormLayout;
    form->addRow(tr("Channel:"), m_channel);
    form->addRow(tr("Frequency:"), m_frequency);
    form->addRow(tr("Class:"), m_class);
    form->addRow(tr("International class:"), m_intlClass);
    auto* layout = new QVBoxLayout(page);
    layout->addLayout(form);
    layout->addStretch();
    layout->addWidget(page->Reason());
    return page;
}

QWizardPage* NewJobWizard::MakeScanPage() {
    auto* page = new CheckedPage([this] {
        return ValidJobName(m_jobName->text()) ? QString() : tr("Give the job a name.");
    });
    page->setObjectName(QStringLiteral("pageScan"));
    page->setTitle(tr("Scan Range and Comments"));
    m_range = new QSpinBox(page);
    m_range->setObjectName(QStringLiteral("txtRange"));
    m_range->setRange(1, kMaxScanRangeKm);
    m_range->setValue(kDefaultScanRangeKm);
    m_range->setSuffix(tr(" km"));
    m_comments = new QPlainTextEdit(page);
    m_comments->setObjectName(QStringLiteral("txtComments"));
    m_jobName = new QLineEdit(QStringLiteral("noname"), page);
    m_jobName->setObjectName(QStringLiteral("txtJobName"));
    connect(m_jobName, &QLineEdit::textChanged, page, &CheckedPage::Recheck);

    auto* form = new QFormLayout;
    form->addRow(tr("Scan range:"), m_range);
    form->addRow(tr("Comments:"), m_comments);
    form->addRow(tr("Job name:"), m_jobName);
    auto* layout = new QVBoxLayout(page);
    layout->addLayout(form);
    layout->addWidget(page->Reason());
    return page;
}

void NewJobWizard::SyncFrequency(int channel) {
    if (m_syncing) return;
    m_syncing = true;
    m_frequency->setValue(ChannelFrequency(channel));
    m_syncing = false;
}

void NewJobWizard::SyncChannel(double mhz) {
    if (m_syncing) return;
    const int channel = FrequencyChannel(mhz);
    if (channel == 0) return;
    m_syncing = true;
    m_channel->setValue(channel);
    m_syncing = false;
}

void NewJobWizard::SetTarget(double lat, double lonWest, int channel, const QString& stationClass,
                             const QString& intlClass) {
    m_lat->SetValue(lat);
    m_lon->SetValue(lonWest);
    m_channel->setValue(channel);
    m_class->setCurrentText(stationClass);
    m_intlClass->setCurrentText(intlClass);
}

void NewJobWizard::SetScan(int rangeKm, const QString& comments, const QString& jobName) {
    m_range->setValue(rangeKm);
    m_comments->setPlainText(comments);
    m_jobName->setText(jobName);
}

NewJobRequest NewJobWizard::Request() const {
    NewJobRequest request;
    jobs::NewJobInputs& in = request.inputs;
    in.lat = m_lat->Value().value_or(0.0);
    in.lon = m_lon->Value().value_or(0.0);
    in.channel = std::to_string(m_channel->value());
    in.stationClass = m_class->currentText().toStdString();
    in.intlClass = m_intlClass->currentText().toStdString();
    in.scanRange = static_cast<std::int16_t>(m_range->value());
    in.comments = m_comments->toPlainText().toStdString();
    // ".fmj" is added unless the name already ends in it.
    request.jobFile = jobs::JobWorkingNames(m_jobFolder / m_jobName->text().trimmed().toStdString(), {}).jobFile;
    return request;
}

}  // namespace qarvel::app
