#pragma once
// A wizard page whose completeness is a function: the new-job wizard's pages
// let the user on only while their entries are valid, and say why not.

#include <QLabel>
#include <QWizardPage>

#include <functional>

namespace qarvel::app {

class CheckedPage : public QWizardPage {
    Q_OBJECT

public:
    // check: "" when the page is complete, else the reason shown under it.
    explicit CheckedPage(std::function<QString()> check, QWidget* parent = nullptr)
        : QWizardPage(parent), m_check(std::move(check)), m_reason(new QLabel(this)) {
        m_reason->setObjectName(QStringLiteral("lblReason"));
        m_reason->setStyleSheet(QStringLiteral("color: #a00000"));
    }
    bool isComplete() const override {
        const QString reason = m_check ? m_check() : QString();
        m_reason->setText(reason);
        return reason.isEmpty();
    }
    QLabel* Reason() const { return m_reason; }
    // Entries call this when they change.
    void Recheck() { emit completeChanged(); }

private:
    std::function<QString()> m_check;
    QLabel* m_reason;
};

}  // namespace qarvel::app
