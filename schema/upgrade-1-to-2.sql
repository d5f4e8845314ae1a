-- Brings a library of version 1 to version 2. Stop all programs that use the library, then run
-- "sqlite3 library.db < upgrade-1-to-2.sql". Run on any other library it changes nothing.

.bail on

BEGIN IMMEDIATE;

-- Indexes by word within groups; sqlite.sql says why.

CREATE TEMP TABLE version (number CHECK (number = 1));
INSERT INTO version SELECT user_version FROM pragma_user_version;
DROP TABLE version;

DROP INDEX root_word_word;
CREATE INDEX root_word_word ON root_word (id / 2048, word);
DROP INDEX word_index_id_root_word;
CREATE INDEX word_index_id_root_word ON word_index (id_document_object / 16, id_root_word);

-- Which words may have lost their last hit.

CREATE TABLE word_release (
  id_document_object LONG,
  id_root_word LONG
);
CREATE TABLE word_purge (
  last_root_word LONG NOT NULL
);
INSERT INTO word_purge (last_root_word) VALUES (0);

CREATE TRIGGER word_index_deleted AFTER DELETE ON word_index BEGIN
  INSERT INTO word_release (id_document_object, id_root_word) VALUES (OLD.id_document_object, OLD.id_root_word);
END;
CREATE TRIGGER word_index_updated AFTER UPDATE OF id_root_word ON word_index BEGIN
  INSERT INTO word_release (id_document_object, id_root_word) VALUES (OLD.id_document_object, OLD.id_root_word);
END;
CREATE TRIGGER root_word_added AFTER INSERT ON root_word WHEN NEW.id <= (SELECT last_root_word FROM word_purge) BEGIN
  INSERT INTO word_release (id_root_word) VALUES (NEW.id);
END;
CREATE TRIGGER root_word_renumbered AFTER UPDATE OF id ON root_word BEGIN
  INSERT INTO word_release (id_root_word) VALUES (NEW.id);
END;

ANALYZE sqlite_schema;
DELETE FROM sqlite_stat1 WHERE tbl IN ('root_word', 'word_index');
INSERT INTO sqlite_stat1 (tbl, idx, stat) VALUES
  ('root_word', 'root_word_word', '150000 2048 1'),
  ('word_index', 'word_index_id_document_object', '3000000 760'),
  ('word_index', 'word_index_id_root_word', '3000000 12160 2');

PRAGMA user_version = 2;
COMMIT;
