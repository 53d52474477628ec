#include "BlogService.h"

#include <QFile>
#include <QLoggingCategory>
#include <QXmlStreamReader>

Q_LOGGING_CATEGORY(lcBlogService, "corvell.publishing.services")

QList<BlogService> BlogService::ReadCatalog(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qCWarning(lcBlogService) << "no blogging services:" << path << file.errorString();
        return {};
    }
    QList<BlogService> services;
    QXmlStreamReader reader(&file);
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement || reader.name() != QLatin1String("service"))
            continue;
        const QXmlStreamAttributes attributes = reader.attributes();
        BlogService service{attributes.value(QStringLiteral("name")).toString().trimmed(),
                            attributes.value(QStringLiteral("code")).toInt(),
                            attributes.value(QStringLiteral("api")).toString(),
                            attributes.value(QStringLiteral("postUrl")).toString(),
                            attributes.value(QStringLiteral("askUrl")) == QLatin1String("true")};
        if (service.api.isEmpty())
            service.api = QStringLiteral("MetaWeblog");
        if (!service.name.isEmpty())
            services.append(service);
    }
    if (reader.hasError()) {
        qCWarning(lcBlogService) << path << "is not readable:" << reader.errorString();
        return {};
    }
    return services;
}
