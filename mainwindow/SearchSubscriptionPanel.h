#pragma once

#include "SearchSource.h"
#include "SearchUrl.h"
#include "SubscribeClient.h"

#include <QGroupBox>

#include <memory>
#include <optional>

class CBNamedAnswer;

namespace Ui {
class SearchSubscriptionPanel;
}

// The search of a search subscription: its source, words and result limit. The sources come
// from the engine each time a search subscription is shown.
class SearchSubscriptionPanel : public QGroupBox
{
    Q_OBJECT
public:
    explicit SearchSubscriptionPanel(QWidget *parent = nullptr);
    ~SearchSubscriptionPanel() override;

    void SetClient(quillon::SubscribeClientPtr client) { m_client = std::move(client); }
    // Empties the fields and drops an answer still on its way.
    void Clear();
    // Shows the search the URL holds and asks the engine for its sources.
    void Load(const QString &url);
    // The URL now stored, after an apply wrote it.
    void SetStored(const QString &url) { m_loaded = SearchUrl::Parse(url); }
    void EnableLimit();
    // The edited search as the URL to store; nothing when it is unchanged. Throws FieldError.
    [[nodiscard]] std::optional<QString> EditedUrl();

    Q_INVOKABLE void EventSearchSourcesCallback(qint32 message);

Q_SIGNALS:
    // The user changed the search.
    void Edited();

private:
    void OnEdited();
    void OnSourceChosen();
    void RequestSources();
    void ShowSources();
    void ShowSourceLimit();
    [[nodiscard]] const SearchSource *ChosenSource() const;
    [[nodiscard]] bool SourceGivesLimit() const;
    [[nodiscard]] SearchUrl SearchInForm() const;

    std::unique_ptr<Ui::SearchSubscriptionPanel> ui;
    quillon::SubscribeClientPtr m_client;
    SearchUrl m_loaded;
    QList<SearchSource> m_sources;
    std::shared_ptr<CBNamedAnswer> m_sourcesCallback;
    bool m_loading = false;
};
