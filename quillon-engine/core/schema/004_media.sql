-- Where a consumer stored an enclosure on this computer (the media downloader), so article
-- pages and delivered messages can point at the file.
ALTER TABLE article_enclosures ADD COLUMN file TEXT;

-- The media consumer receives every subscription without being bound: an article whose
-- enclosure it stored is a removal for it when the article goes.
CREATE TRIGGER media_article_deleted BEFORE DELETE ON articles
WHEN EXISTS (SELECT 1 FROM article_enclosures e WHERE e.article_id = old.id AND e.file IS NOT NULL)
BEGIN
    INSERT OR IGNORE INTO delivery_removals (consumer_id, article_id, subscription_id, guid)
    VALUES ('MEDIACONSUMER', old.id, old.subscription_id, old.guid); END;
