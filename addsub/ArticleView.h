#pragma once

#include <QObject>
#include <QUrl>

class QWidget;

// The embedded browser the preview shows articles in: navigate, location, navigation complete.
class ArticleView : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~ArticleView() override = default;

    [[nodiscard]] virtual QWidget *Widget() = 0;
    virtual void Navigate(const QUrl &url) = 0;
    [[nodiscard]] virtual QUrl Location() const = 0;
    [[nodiscard]] virtual QString Title() const = 0;
    // Whether the page shown may load from the web (images, media); off until the reader asks.
    virtual void AllowRemoteContent(bool allow) = 0;

Q_SIGNALS:
    void NavigationComplete(const QUrl &location, bool ok);
};
