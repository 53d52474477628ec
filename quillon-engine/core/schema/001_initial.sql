-- Statements are separated by a semicolon at the end of a line; no triggers.

CREATE TABLE subscriptions (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    title TEXT,
    url TEXT,
    category TEXT,
    user_name TEXT,
    password TEXT,
    update_freq INTEGER,
    delete_read INTEGER,
    delete_unread INTEGER,
    last_update_status TEXT,
    last_date_check TEXT,
    next_update_time TEXT,
    created_at TEXT NOT NULL
);

-- Names a consumer set with UpdateItem that have no column above; value keeps its type.
CREATE TABLE subscription_properties (
    subscription_id INTEGER NOT NULL REFERENCES subscriptions(id) ON DELETE CASCADE,
    name TEXT NOT NULL COLLATE NOCASE,
    value,
    UNIQUE (subscription_id, name)
);

CREATE TABLE articles (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    subscription_id INTEGER NOT NULL REFERENCES subscriptions(id) ON DELETE CASCADE,
    guid TEXT NOT NULL,
    title TEXT,
    link TEXT,
    author TEXT,
    body TEXT,
    published TEXT,
    fetched_at TEXT,
    is_read INTEGER NOT NULL DEFAULT 0,
    enclosure_url TEXT,
    enclosure_type TEXT,
    enclosure_length INTEGER,
    UNIQUE (subscription_id, guid)
);

CREATE INDEX articles_by_read_state ON articles(subscription_id, is_read);

-- awaiting_confirmation: bound by an add request and not touched by BindItem since.
CREATE TABLE bindings (
    consumer_id TEXT NOT NULL COLLATE NOCASE,
    subscription_id INTEGER NOT NULL REFERENCES subscriptions(id) ON DELETE CASCADE,
    awaiting_confirmation INTEGER NOT NULL DEFAULT 0,
    bound_at TEXT NOT NULL,
    PRIMARY KEY (consumer_id, subscription_id)
);

CREATE INDEX bindings_by_subscription ON bindings(subscription_id);

-- Articles a consumer has already received.
CREATE TABLE delivered_articles (
    consumer_id TEXT NOT NULL COLLATE NOCASE,
    article_id INTEGER NOT NULL REFERENCES articles(id) ON DELETE CASCADE,
    delivered_at TEXT NOT NULL,
    PRIMARY KEY (consumer_id, article_id)
);

CREATE INDEX delivered_by_article ON delivered_articles(article_id);

CREATE TABLE settings (
    consumer_id TEXT NOT NULL COLLATE NOCASE,
    section TEXT NOT NULL COLLATE NOCASE,
    key TEXT NOT NULL COLLATE NOCASE,
    value TEXT NOT NULL,
    PRIMARY KEY (consumer_id, section, key)
);

CREATE INDEX settings_by_section ON settings(section);

CREATE TABLE engine_log (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    logged_at TEXT NOT NULL,
    level INTEGER NOT NULL,
    consumer_id TEXT NOT NULL,
    message TEXT NOT NULL
);
