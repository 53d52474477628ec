-- Read marks a delivering consumer must carry into its mail store: an article it received
-- was marked read or unread elsewhere (another consumer, the online service). Kept in order of
-- change, so a consumer confirms up to the last one it applied and misses none that came later.

CREATE TABLE delivery_read_marks (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    consumer_id TEXT NOT NULL COLLATE NOCASE,
    article_id INTEGER NOT NULL,
    subscription_id INTEGER NOT NULL,
    is_read INTEGER NOT NULL
);

CREATE INDEX delivery_read_marks_by_consumer ON delivery_read_marks(consumer_id, id);

CREATE TRIGGER delivered_article_read_changed AFTER UPDATE OF is_read ON articles
WHEN old.is_read <> new.is_read
BEGIN
    INSERT INTO delivery_read_marks (consumer_id, article_id, subscription_id, is_read)
    SELECT d.consumer_id, new.id, new.subscription_id, new.is_read FROM delivered_articles d
    WHERE d.article_id = new.id AND EXISTS (SELECT 1 FROM bindings b
        WHERE b.consumer_id = d.consumer_id AND b.subscription_id = new.subscription_id); END;
