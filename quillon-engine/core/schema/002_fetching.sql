-- What fetching keeps: the validators of the copy last read, every enclosure of an article,
-- and the keys of articles deleted by age while the feed still offers them.

ALTER TABLE subscriptions ADD COLUMN etag TEXT;
ALTER TABLE subscriptions ADD COLUMN last_modified TEXT;
CREATE INDEX subscriptions_by_next_update ON subscriptions(next_update_time);

ALTER TABLE articles DROP COLUMN enclosure_url;
ALTER TABLE articles DROP COLUMN enclosure_type;
ALTER TABLE articles DROP COLUMN enclosure_length;
ALTER TABLE articles ADD COLUMN updated TEXT;

CREATE TABLE article_enclosures (
    article_id INTEGER NOT NULL REFERENCES articles(id) ON DELETE CASCADE,
    position INTEGER NOT NULL,
    url TEXT NOT NULL,
    type TEXT,
    length INTEGER,
    PRIMARY KEY (article_id, position)
);

-- Without these, an article deleted for its age would come back as new on the next fetch.
CREATE TABLE purged_articles (
    subscription_id INTEGER NOT NULL REFERENCES subscriptions(id) ON DELETE CASCADE,
    guid TEXT NOT NULL,
    PRIMARY KEY (subscription_id, guid)
);
