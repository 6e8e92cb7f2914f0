#pragma once
// The new-job wizard: gathers a job's target - location, FM channel (or its
// frequency), class and international class, scan range, comments - and the
// name the job is to be saved under. Each page lets the user on only while
// its entries are valid as the job builder will judge them
// (ValidJobLocation, ParseJobChannel, a known class), so the builder's own
// messages are left for what only it can find out.

#include <QWizard>

#include <filesystem>

#include "jobs/job_build.h"

class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QRadioButton;
class QSpinBox;

namespace qarvel::app {

class CoordinateEntry;

// What the wizard hands to the job controller: the target part of the
// build inputs (lat/lon in degrees, longitude positive WEST; channel and
// classes as texts; scan range in km; comments) and the job file to be.
struct NewJobRequest {
    jobs::NewJobInputs inputs;
    std::filesystem::path jobFile;
};

// Frequency in MHz of FM channel 200..300: 87.9 + 0.2 x (channel - 200).
double ChannelFrequency(int channel);
// The channel of a frequency (MHz), rounded to the nearest channel; 0 when
// it lies outside 87.9..107.9 MHz.
int FrequencyChannel(double mhz);

inline constexpr int kDefaultScanRangeKm = 300;

class NewJobWizard : public QWizard {
    Q_OBJECT

public:
    // jobFolder: where the job file goes (gJobDIR).
    explicit NewJobWizard(std::filesystem::path jobFolder, QWidget* parent = nullptr);

    NewJobRequest Request() const;

    // The entries, for a caller that fills the wizard itself (tests, a
    // repeat of the last job).
    void SetTarget(double lat, double lonWest, int channel, const QString& stationClass,
                   const QString& intlClass = {});
    void SetScan(int rangeKm, const QString& comments, const QString& jobName);

    CoordinateEntry* Latitude() const { return m_lat; }
    CoordinateEntry* Longitude() const { return m_lon; }

private:
    QWizardPage* MakeLocationPage();
    QWizardPage* MakeStationPage();
    QWizardPage* MakeScanPage();
    void SyncFrequency(int channel);
    void SyncChannel(double mhz);

    std::filesystem::path m_jobFolder;
    CoordinateEntry* m_lat = nullptr;
    CoordinateEntry* m_lon = nullptr;
    QRadioButton* m_decimal = nullptr;
    QRadioButton* m_dms = nullptr;
    QSpinBox* m_channel = nullptr;
    QDoubleSpinBox* m_frequency = nullptr;
    QComboBox* m_class = nullptr;
    QComboBox* m_intlClass = nullptr;
    QSpinBox* m_range = nullptr;
    QPlainTextEdit* m_comments = nullptr;
    QLineEdit* m_jobName = nullptr;
    bool m_syncing = false;
};

}  // namespace qarvel::app
