#pragma once

#include "EngineDatabase.h"

namespace quillon {

// Undoes everything since construction unless commit() ran; an exception thus leaves the
// store as it was before the operation.
class SqlTransaction
{
public:
    explicit SqlTransaction(EngineDatabase &db) : m_db(db) { m_db.begin(); }
    ~SqlTransaction()
    {
        if (!m_done)
            m_db.rollback();
    }
    SqlTransaction(const SqlTransaction &) = delete;
    SqlTransaction &operator=(const SqlTransaction &) = delete;

    void commit()
    {
        m_done = true;
        m_db.commit();
    }

private:
    EngineDatabase &m_db;
    bool m_done = false;
};

} // namespace quillon
