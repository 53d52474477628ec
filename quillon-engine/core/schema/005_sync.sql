-- Online synchronisation: local changes queued the moment they happen, and the subscriptions
-- both sides held after the last run (so a removal on one side is told from an addition).

-- Present while changes are queued: synchronisation is on and no run is applying its own.
CREATE TABLE sync_switch (name TEXT PRIMARY KEY);

CREATE TABLE sync_changes (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    kind TEXT NOT NULL,
    url TEXT,
    article_id INTEGER,
    changed_at TEXT NOT NULL
);

CREATE TABLE sync_feeds (
    url TEXT PRIMARY KEY,
    remote_id TEXT NOT NULL
);

CREATE TRIGGER sync_subscription_added AFTER INSERT ON subscriptions
WHEN EXISTS (SELECT 1 FROM sync_switch)
BEGIN
    INSERT INTO sync_changes (kind, url, changed_at)
    VALUES ('subscribe', new.url, strftime('%Y-%m-%dT%H:%M:%fZ', 'now')); END;

CREATE TRIGGER sync_subscription_removed AFTER DELETE ON subscriptions
WHEN EXISTS (SELECT 1 FROM sync_switch)
BEGIN
    INSERT INTO sync_changes (kind, url, changed_at)
    VALUES ('unsubscribe', old.url, strftime('%Y-%m-%dT%H:%M:%fZ', 'now')); END;

CREATE TRIGGER sync_read_state_changed AFTER UPDATE OF is_read ON articles
WHEN old.is_read <> new.is_read AND EXISTS (SELECT 1 FROM sync_switch)
BEGIN
    INSERT INTO sync_changes (kind, article_id, changed_at)
    VALUES (CASE WHEN new.is_read THEN 'read' ELSE 'unread' END, new.id,
            strftime('%Y-%m-%dT%H:%M:%fZ', 'now')); END;

-- A subscription whose address moved to the feed behind a web page is another feed remotely.
CREATE TRIGGER sync_subscription_moved AFTER UPDATE OF url ON subscriptions
WHEN old.url <> new.url AND EXISTS (SELECT 1 FROM sync_switch)
BEGIN
    INSERT INTO sync_changes (kind, url, changed_at)
    VALUES ('unsubscribe', old.url, strftime('%Y-%m-%dT%H:%M:%fZ', 'now')), ('subscribe', new.url, strftime('%Y-%m-%dT%H:%M:%fZ', 'now')); END;
