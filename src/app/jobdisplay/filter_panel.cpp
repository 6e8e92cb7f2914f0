#include "app/jobdisplay/filter_panel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <QToolButton>
#include <QVBoxLayout>

#include "jobview/map_model.h"
#include "jobview/render/map_renderer.h"
#include "jobview/station_colors.h"
#include "jobview/temp_display.h"
#include "spacing/class_codes.h"

namespace qarvel::app {

namespace {

struct SwitchName {
    const char* object;
    const char* caption;
};
constexpr std::array<SwitchName, 6> kStatusSwitches = {{{"optLI", "Licensed"},
                                                        {"optCP", "Construction Permit"},
                                                        {"optAP", "Application"},
                                                        {"optAD", "Addition"},
                                                        {"optVA", "Vacant/Reserved"},
                                                        {"optDE", "Deleted"}}};
constexpr std::array<SwitchName, 6> kRelationSwitches = {{{"optPri", "Primary"},
                                                          {"optFirst", "1st Adj"},
                                                          {"optSecond", "2nd Adj"},
                                                          {"optThird", "3rd Adj"},
                                                          {"optIFreq", "IF"},
                                                          {"optTV6", "TV6"}}};
constexpr std::array<std::int32_t, 6> kRelationColors = {jobview::kColorPrimary,  jobview::kColorFirstAdj,
                                                         jobview::kColorSecondAdj, jobview::kColorThirdAdj,
                                                         jobview::kColorIF,       jobview::kColorTV6};

// The filter's switches in the panel's order.
std::array<bool*, 6> StatusFields(jobview::StudyFilter& f) {
    return {&f.statusLI, &f.statusCP, &f.statusAP, &f.statusAD, &f.statusVA, &f.statusDE};
}
std::array<bool*, 6> RelationFields(jobview::StudyFilter& f) {
    return {&f.primary, &f.firstAdjacent, &f.secondAdjacent, &f.thirdAdjacent, &f.intermediateFrequency, &f.tv6};
}

QLabel* CountLabel(QWidget* parent, const QString& name) {
    auto* label = new QLabel(StationsText(0), parent);
    label->setObjectName(name);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return label;
}

QStringList ClassTexts() {
    QStringList texts;
    for (std::size_t i = 1; i < spacing::ClassName.size(); ++i) texts << QString::fromStdString(spacing::ClassName[i]);
    return texts;
}

}  // namespace

QString StationsText(int count) { return QString::number(count) + QStringLiteral(" stations"); }

FilterPanel::FilterPanel(QWidget* parent)
    : QWidget(parent),
      m_scale(new QSlider(Qt::Horizontal, this)),
      m_clearance(new QSlider(Qt::Horizontal, this)),
      m_range(new QLabel(this)) {
    setObjectName(QStringLiteral("pnlControls"));
    m_scale->setObjectName(QStringLiteral("sliderScale"));
    m_scale->setRange(1, jobview::kScaleSliderPositions);
    m_scale->setValue(jobview::kDefaultScalePosition);
    m_scale->setPageStep(1);
    m_scale->setTickPosition(QSlider::TicksBelow);
    m_clearance->setObjectName(QStringLiteral("sliderClearance"));
    m_clearance->setRange(kClearanceSliderMin, kClearanceSliderMax);
    m_clearance->setValue(static_cast<int>(jobview::kDefaultClearanceLimitKm));
    m_range->setObjectName(QStringLiteral("lblRange"));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("Scale"), this));
    layout->addWidget(m_scale);
    layout->addWidget(m_range);
    layout->addWidget(m_clearance);
    layout->addWidget(MakeTargetGroup());
    layout->addWidget(MakeStatusGroup());
    layout->addWidget(MakeRelationGroup());
    layout->addStretch();

    connect(m_scale, &QSlider::valueChanged, this, &FilterPanel::scalePositionChanged);
    connect(m_clearance, &QSlider::valueChanged, this, &FilterPanel::clearanceChanged);
}

QCheckBox* FilterPanel::AddSwitch(const QString& name, const QString& caption) {
    auto* box = new QCheckBox(caption, this);
    box->setObjectName(name);
    connect(box, &QCheckBox::toggled, this, &FilterPanel::switchesChanged);
    return box;
}

QWidget* FilterPanel::MakeStatusGroup() {
    auto* group = new QGroupBox(tr("Status"), this);
    auto* grid = new QGridLayout(group);
    for (std::size_t i = 0; i < kStatusSwitches.size(); ++i) {
        m_status[i] = AddSwitch(QString::fromLatin1(kStatusSwitches[i].object), tr(kStatusSwitches[i].caption));
    }
    // The legend counts RS (reserved) apart from VA, though one box admits both.
    const std::array<int, 7> boxOfCount = {0, 1, 2, 3, 4, -1, 5};
    for (std::size_t i = 0; i < jobview::kLegendStatuses.size(); ++i) {
        const int row = static_cast<int>(i);
        const QString code = QString::fromLatin1(jobview::kLegendStatuses[i]);
        if (boxOfCount[i] >= 0) grid->addWidget(m_status[static_cast<std::size_t>(boxOfCount[i])], row, 0);
        else grid->addWidget(new QLabel(tr("    (reserved)"), group), row, 0);
        m_statusCounts[i] = CountLabel(group, QStringLiteral("lblCount") + code);
        grid->addWidget(m_statusCounts[i], row, 1);
    }
    return group;
}

QWidget* FilterPanel::MakeRelationGroup() {
    auto* group = new QGroupBox(tr("Channels"), this);
    auto* grid = new QGridLayout(group);
    for (std::size_t i = 0; i < kRelationSwitches.size(); ++i) {
        const int row = static_cast<int>(i);
        m_relation[i] = AddSwitch(QString::fromLatin1(kRelationSwitches[i].object), tr(kRelationSwitches[i].caption));
        auto* swatch = new QLabel(group);
        swatch->setFixedSize(12, 12);
        swatch->setStyleSheet(QStringLiteral("background: %1; border: 1px solid gray")
                                  .arg(jobview::ToQColor(kRelationColors[i]).name()));
        grid->addWidget(swatch, row, 0);
        grid->addWidget(m_relation[i], row, 1);
        m_relationCounts[i] = CountLabel(group, QStringLiteral("lblCount") + QString::fromLatin1(kRelationSwitches[i].object).mid(3));
        grid->addWidget(m_relationCounts[i], row, 2);
    }
    return group;
}

QWidget* FilterPanel::MakeTargetGroup() {
    auto* group = new QGroupBox(tr("Target"), this);
    auto* grid = new QGridLayout(group);
    m_channel = new QLabel(group);
    m_channel->setObjectName(QStringLiteral("lblChannel"));
    m_up = new QToolButton(group);
    m_up->setObjectName(QStringLiteral("btnChanUp"));
    m_up->setArrowType(Qt::UpArrow);
    m_down = new QToolButton(group);
    m_down->setObjectName(QStringLiteral("btnChanDn"));
    m_down->setArrowType(Qt::DownArrow);
    m_class = new QComboBox(group);
    m_class->setObjectName(QStringLiteral("cboClass"));
    m_class->addItems(ClassTexts());
    m_intlClass = new QComboBox(group);
    m_intlClass->setObjectName(QStringLiteral("cboIClass"));
    m_intlClass->addItem(QString());
    m_intlClass->addItems(ClassTexts());
    grid->addWidget(m_channel, 0, 0, 1, 2);
    grid->addWidget(m_down, 0, 2);
    grid->addWidget(m_up, 0, 3);
    grid->addWidget(new QLabel(tr("Class"), group), 1, 0);
    grid->addWidget(m_class, 1, 1, 1, 3);
    grid->addWidget(new QLabel(tr("Intl Class"), group), 2, 0);
    grid->addWidget(m_intlClass, 2, 1, 1, 3);
    connect(m_up, &QToolButton::clicked, this, [this] { emit channelStep(+1); });
    connect(m_down, &QToolButton::clicked, this, [this] { emit channelStep(-1); });
    connect(m_class, &QComboBox::textActivated, this, &FilterPanel::classChosen);
    connect(m_intlClass, &QComboBox::textActivated, this, &FilterPanel::intlClassChosen);
    return group;
}

void FilterPanel::ShowFilter(const jobview::StudyFilter& filter) {
    jobview::StudyFilter copy = filter;
    const auto status = StatusFields(copy);
    const auto relation = RelationFields(copy);
    for (std::size_t i = 0; i < m_status.size(); ++i) {
        const QSignalBlocker block(m_status[i]);
        m_status[i]->setChecked(*status[i]);
    }
    for (std::size_t i = 0; i < m_relation.size(); ++i) {
        const QSignalBlocker block(m_relation[i]);
        m_relation[i]->setChecked(*relation[i]);
    }
    {
        const QSignalBlocker block(m_clearance);
        m_clearance->setValue(static_cast<int>(filter.clearanceLimitKm));
    }
    const jobview::StudyTarget& t = filter.target;
    m_channel->setText(tr("Channel: ") + QString::fromStdString(jobview::ChannelText(t.channel)));
    m_class->setCurrentIndex(t.stationClass);          // -1 leaves the list blank
    m_intlClass->setCurrentIndex(t.intlClass + 1);     // entry 0 is "none"
    m_up->setEnabled(t.channel < 300);
    m_down->setEnabled(t.channel > 200);
}

void FilterPanel::ReadSwitches(jobview::StudyFilter& filter) const {
    const auto status = StatusFields(filter);
    const auto relation = RelationFields(filter);
    for (std::size_t i = 0; i < m_status.size(); ++i) *status[i] = m_status[i]->isChecked();
    for (std::size_t i = 0; i < m_relation.size(); ++i) *relation[i] = m_relation[i]->isChecked();
}

void FilterPanel::SetScalePosition(int position) {
    const QSignalBlocker block(m_scale);
    m_scale->setValue(position);
}

int FilterPanel::ScalePosition() const { return m_scale->value(); }
int FilterPanel::ClearanceLimit() const { return m_clearance->value(); }
void FilterPanel::SetRangeText(const QString& text) { m_range->setText(text); }

void FilterPanel::SetClearanceMaximum(int km) {
    const QSignalBlocker block(m_clearance);
    m_clearance->setMaximum(std::max(km, kClearanceSliderMin + 1));
}

void FilterPanel::SetCounts(const jobview::MapCounts& counts) {
    for (std::size_t i = 0; i < m_statusCounts.size(); ++i) m_statusCounts[i]->setText(StationsText(counts.byStatus[i]));
    for (std::size_t i = 0; i < m_relationCounts.size(); ++i) {
        m_relationCounts[i]->setText(StationsText(counts.byRelation[i]));
    }
}

}  // namespace qarvel::app
