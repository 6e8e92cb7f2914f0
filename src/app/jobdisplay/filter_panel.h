#pragma once
// The job display's controls beside the map: the scale slider
// (`sliderScale`), the clearance slider (`sliderClearance`) with its
// "Range: ..." text, the status and relation check boxes (`optLI` ...
// `optDE`, `optPri` ... `optTV6`) with the legend counts ("N stations"),
// the channel buttons (`btnChanUp`, `btnChanDn`) and the class lists
// (`cboClass`, `cboIClass`). The panel only shows and reports; the job
// display decides what a change does.

#include <QWidget>

#include <array>

#include "jobview/display_list.h"
#include "jobview/study_filter.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QSlider;
class QToolButton;

namespace qarvel::app {

// The clearance slider's range (km).
inline constexpr int kClearanceSliderMin = -50;
inline constexpr int kClearanceSliderMax = 300;

class FilterPanel : public QWidget {
    Q_OBJECT

public:
    explicit FilterPanel(QWidget* parent = nullptr);

    // Shows the filter's switches, limit, target channel and classes
    // without reporting them back.
    void ShowFilter(const jobview::StudyFilter& filter);
    // Copies the check boxes into the filter's switches.
    void ReadSwitches(jobview::StudyFilter& filter) const;

    void SetScalePosition(int position);
    int ScalePosition() const;
    int ClearanceLimit() const;
    void SetRangeText(const QString& text);
    void SetCounts(const jobview::MapCounts& counts);
    void SetClearanceMaximum(int km);

    QSlider* ScaleSlider() const { return m_scale; }
    QSlider* ClearanceSlider() const { return m_clearance; }

signals:
    void scalePositionChanged(int position);
    void clearanceChanged(int km);
    void switchesChanged();
    void channelStep(int delta);
    void classChosen(const QString& text);
    void intlClassChosen(const QString& text);

private:
    QWidget* MakeStatusGroup();
    QWidget* MakeRelationGroup();
    QWidget* MakeTargetGroup();
    QCheckBox* AddSwitch(const QString& name, const QString& caption);

    QSlider* m_scale;
    QSlider* m_clearance;
    QLabel* m_range;
    QLabel* m_channel = nullptr;
    QComboBox* m_class = nullptr;
    QComboBox* m_intlClass = nullptr;
    QToolButton* m_up = nullptr;
    QToolButton* m_down = nullptr;
    // In the order of the filter's fields.
    std::array<QCheckBox*, 6> m_status{};    // LI CP AP AD VA DE
    std::array<QCheckBox*, 6> m_relation{};  // Pri First Second Third IF TV6
    std::array<QLabel*, 7> m_statusCounts{};    // jobview::kLegendStatuses order
    std::array<QLabel*, 6> m_relationCounts{};  // jobview::kLegendRelations order
};

// "N stations", the legend text of a count.
QString StationsText(int count);

}  // namespace qarvel::app
