-- What a delivering consumer must take out of its mail store again: articles it received that
-- were deleted for their age, or whose delivery was stopped with "remove the articles".
-- A trigger's inner statements end within its last line ("; END;") for the script splitter.

CREATE TABLE delivery_removals (
    consumer_id TEXT NOT NULL COLLATE NOCASE,
    article_id INTEGER NOT NULL,
    subscription_id INTEGER NOT NULL,
    guid TEXT NOT NULL,
    PRIMARY KEY (consumer_id, article_id)
);

-- An article deleted while still bound to a consumer that received it.
CREATE TRIGGER delivered_article_deleted BEFORE DELETE ON articles
BEGIN
    INSERT OR IGNORE INTO delivery_removals (consumer_id, article_id, subscription_id, guid)
    SELECT d.consumer_id, old.id, old.subscription_id, old.guid FROM delivered_articles d
    WHERE d.article_id = old.id AND EXISTS (SELECT 1 FROM bindings b
        WHERE b.consumer_id = d.consumer_id AND b.subscription_id = old.subscription_id); END;

-- A delivered mark dropped while its article stays: delivery stopped with removal.
CREATE TRIGGER delivered_mark_dropped AFTER DELETE ON delivered_articles
WHEN EXISTS (SELECT 1 FROM articles WHERE id = old.article_id)
BEGIN
    INSERT OR IGNORE INTO delivery_removals (consumer_id, article_id, subscription_id, guid)
    SELECT old.consumer_id, a.id, a.subscription_id, a.guid FROM articles a WHERE a.id = old.article_id; END;
