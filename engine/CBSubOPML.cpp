#include "CBSubOPML.h"

#include <QMetaObject>
#include <QObject>

void CBSubOPML::Setup(QObject *target, qint32 tag)
{
    CBBase::Setup(target);
    m_tag = tag;
}

void CBSubOPML::Handle(quillon::Handle &bag)
{
    // The receiver takes the tag first, then the bag.
    QMetaObject::invokeMethod(Target(), HandlerName(), Qt::DirectConnection, Q_ARG(qint32, m_tag),
                              Q_ARG(qint32, bag));
}
