#pragma once

#include <QDateTime>
#include <QString>

namespace quillon {

// What an article template's placeholders are filled with; the preview and the mail delivery
// both fill their pages from this one table.
struct ArticlePageValues
{
    QString idText;
    QString localPath;
    QString title;
    QString body; // HTML, put in as it is
    QString url;
    QString hostTitle;
    QString hostUrl;
    QString source;
    QString comments;
    QString enclosure;
    QString date;
    QString hidden;
    QString author; // "~DATA_ARTICLEAUTHOR~", after the others
};

class ArticlePage
{
public:
    enum class Pass {
        InOrder, // placeholder after placeholder, so a value put in earlier is searched again
        Once     // one pass over the template: a value that looks like a placeholder stays as it is
    };

    // Placeholders match without regard to case; the single pass also drops those it does not know.
    [[nodiscard]] static QString fill(const QString &pageTemplate, const ArticlePageValues &values,
                                      Pass pass);

    // How both pages write an article's date ("" for none) and an enclosure's type and size.
    [[nodiscard]] static QString dateText(const QDateTime &date);
    [[nodiscard]] static QString enclosureDetail(const QString &type, qint64 length);
};

} // namespace quillon
