#include "SearchSubscriptionPanel.h"

#include "CBNamedAnswer.h"
#include "HandlerNames.h"
#include "SubscriptionSettingsStore.h"
#include "TimeField.h"
#include "editorLogging.h"
#include "ui_SearchSubscriptionPanel.h"

#include <QScopedValueRollback>

namespace {
const QString kSearchLimitField = QStringLiteral("the number of search results");
const QString kNotApplicable = QStringLiteral("n/a");
} // namespace

SearchSubscriptionPanel::SearchSubscriptionPanel(QWidget *parent)
    : QGroupBox(parent), ui(std::make_unique<Ui::SearchSubscriptionPanel>())
{
    ui->setupUi(this);
    for (QLineEdit *field : {ui->txtSearchString, ui->txtSearchLimit})
        connect(field, &QLineEdit::textChanged, this, &SearchSubscriptionPanel::OnEdited);
    connect(ui->chkSearchLimit, &QCheckBox::toggled, this, [this] {
        if (!m_loading)
            EnableLimit();
        OnEdited();
    });
    connect(ui->cboSearchSources, &QComboBox::currentIndexChanged, this,
            &SearchSubscriptionPanel::OnSourceChosen);
}

SearchSubscriptionPanel::~SearchSubscriptionPanel()
{
    if (m_sourcesCallback)
        m_sourcesCallback->Shutdown();
}

void SearchSubscriptionPanel::OnEdited()
{
    if (!m_loading)
        Q_EMIT Edited();
}

void SearchSubscriptionPanel::Clear()
{
    const QScopedValueRollback<bool> loading(m_loading, true);
    for (QLineEdit *field : {ui->txtSearchString, ui->txtSearchLimit})
        field->clear();
    ui->chkSearchLimit->setChecked(false);
    if (m_sourcesCallback)
        m_sourcesCallback->Shutdown(); // an answer for the last selection is no longer wanted
    m_sourcesCallback.reset();
    m_sources.clear();
    ui->cboSearchSources->clear();
    m_loaded = {};
}

void SearchSubscriptionPanel::Load(const QString &url)
{
    const QScopedValueRollback<bool> loading(m_loading, true);
    m_loaded = SearchUrl::Parse(url);
    if (!SearchUrl::LimitCounts(m_loaded.limit))
        m_loaded.limit.clear();
    ui->txtSearchString->setText(m_loaded.keywords);
    ui->chkSearchLimit->setChecked(!m_loaded.limit.isEmpty());
    ui->txtSearchLimit->setText(m_loaded.limit);
    RequestSources();
}

void SearchSubscriptionPanel::RequestSources()
{
    auto callback = std::make_shared<CBNamedAnswer>(HandlerNames::EventSearchSourcesCallback);
    callback->Setup(this);
    m_sourcesCallback = callback;
    try {
        SubscriptionSettingsStore(*m_client).RequestSearchSources(callback);
    } catch (const quillon::EngineError &error) {
        qCWarning(lcEditor) << "search sources not requested:" << error.message();
        callback->Shutdown();
        m_sourcesCallback.reset();
    }
}

void SearchSubscriptionPanel::EventSearchSourcesCallback(qint32 message)
{
    m_sourcesCallback.reset();
    QList<SearchSource> sources;
    try {
        sources = ReadSearchSources(*m_client, message);
    } catch (const quillon::EngineError &error) {
        qCWarning(lcEditor) << "search sources unreadable:" << error.message();
    }
    {
        const QScopedValueRollback<bool> loading(m_loading, true);
        m_sources = sources;
        ShowSources();
    }
    EnableLimit();
}

void SearchSubscriptionPanel::ShowSources()
{
    ui->cboSearchSources->clear();
    qsizetype chosen = -1;
    for (qsizetype i = 0; i < m_sources.size(); ++i) {
        ui->cboSearchSources->addItem(m_sources.at(i).title);
        if (m_sources.at(i).guid == m_loaded.guid)
            chosen = i;
    }
    ui->cboSearchSources->setCurrentIndex(int(chosen));
    if (!ui->chkSearchLimit->isChecked())
        ShowSourceLimit();
}

const SearchSource *SearchSubscriptionPanel::ChosenSource() const
{
    const int index = ui->cboSearchSources->currentIndex();
    return index >= 0 && index < m_sources.size() ? &m_sources.at(index) : nullptr;
}

bool SearchSubscriptionPanel::SourceGivesLimit() const
{
    const SearchSource *source = ChosenSource();
    return !source || SearchUrl::LimitCounts(source->defaultLimit);
}

void SearchSubscriptionPanel::OnSourceChosen()
{
    if (m_loading)
        return;
    ShowSourceLimit();
    EnableLimit();
    Q_EMIT Edited();
}

void SearchSubscriptionPanel::ShowSourceLimit()
{
    const SearchSource *source = ChosenSource();
    if (!source)
        return;
    if (SourceGivesLimit()) {
        ui->txtSearchLimit->setText(source->defaultLimit);
    } else {
        ui->txtSearchLimit->setText(kNotApplicable);
        ui->chkSearchLimit->setChecked(false);
    }
}

void SearchSubscriptionPanel::EnableLimit()
{
    const bool limit = SourceGivesLimit();
    ui->chkSearchLimit->setEnabled(limit);
    ui->txtSearchLimit->setEnabled(limit && ui->chkSearchLimit->isChecked());
}

SearchUrl SearchSubscriptionPanel::SearchInForm() const
{
    const SearchSource *source = ChosenSource();
    SearchUrl search;
    search.guid = source ? source->guid : m_loaded.guid;
    search.keywords = ui->txtSearchString->text();
    if (ui->chkSearchLimit->isChecked() && SourceGivesLimit()) {
        qint32 limit = TimeField::WholeNumber(ui->txtSearchLimit->text(), kSearchLimitField);
        if (source)
            limit = SearchUrl::ClampLimit(limit, *source);
        search.limit = QString::number(limit);
    }
    return search;
}

std::optional<QString> SearchSubscriptionPanel::EditedUrl()
{
    const SearchUrl search = SearchInForm();
    if (search == m_loaded)
        return std::nullopt;
    return SubscriptionSettingsStore(*m_client).SearchUrlText(search);
}
