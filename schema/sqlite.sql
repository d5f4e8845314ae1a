-- The tables of a document library in SQLite. Load it with "tyctl init" or "sqlite3 library.db < sqlite.sql".
--
-- The declared types carry the library's own types, by which values are read back:
--   INTEGER PRIMARY KEY AUTOINCREMENT  a key that the database gives and never gives twice
--   LONG                               a whole number of 32 bits
--   NUMBER                             any number
--   TEXT COLLATE NOCASE                a text; it compares and sorts without regard to letter case
--   DATETIME                           a moment as 'yyyy-mm-dd hh:mm:ss', local time
--   BOOLEAN                            0 or 1

-- A document changes a few rows in most of the pages that it touches, and each page is written whole.
PRAGMA page_size = 2048;
PRAGMA journal_mode = WAL;
PRAGMA application_id = 1417237361; -- 'TySq'

BEGIN;
PRAGMA user_version = 2;

-- The queue: other programs insert, the indexer claims and deletes.

CREATE TABLE file_index_queue (
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  doc_path TEXT COLLATE NOCASE,
  index_type NUMBER DEFAULT 1,
  date_time DATETIME DEFAULT (datetime('now', 'localtime')),
  data_type TEXT COLLATE NOCASE,
  user_id LONG DEFAULT 0,
  flag_dirty BOOLEAN NOT NULL DEFAULT 0 CHECK (flag_dirty IN (0, 1))
);
CREATE INDEX file_index_queue_flag_dirty ON file_index_queue (flag_dirty);
CREATE INDEX file_index_queue_doc_path ON file_index_queue (doc_path);

-- Documents and shares.

CREATE TABLE document_object (
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  source_url TEXT COLLATE NOCASE,
  first_saved DATETIME,
  title TEXT COLLATE NOCASE,
  data_type TEXT COLLATE NOCASE,
  saved_location TEXT COLLATE NOCASE,
  data_size NUMBER,
  snapshot BOOLEAN NOT NULL DEFAULT 0 CHECK (snapshot IN (0, 1)),
  time_stamp DATETIME,
  id_parent LONG,
  id_owning_user LONG,
  location_invalid BOOLEAN NOT NULL DEFAULT 0 CHECK (location_invalid IN (0, 1)),
  location_invalid_date DATETIME,
  flag_user_set_title BOOLEAN NOT NULL DEFAULT 0 CHECK (flag_user_set_title IN (0, 1)),
  flag_indexing_failed BOOLEAN NOT NULL DEFAULT 0 CHECK (flag_indexing_failed IN (0, 1))
);
CREATE INDEX document_object_saved_location ON document_object (saved_location);
CREATE INDEX document_object_id_parent ON document_object (id_parent);

CREATE TABLE document_share (
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  id_document LONG,
  id_user LONG,
  id_prv LONG,
  id_annotation LONG DEFAULT -1,
  anno_points NUMBER DEFAULT 0
);
CREATE INDEX document_share_id_document ON document_share (id_document, id_user);
CREATE INDEX document_share_id_user ON document_share (id_user);

CREATE TABLE annotation (
  id LONG NOT NULL PRIMARY KEY,
  points NUMBER DEFAULT 0
);

-- Relevance values.

CREATE TABLE prv (
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  last_prv NUMBER,
  last_modified DATETIME DEFAULT (datetime('now', 'localtime')),
  hard_prv NUMBER,
  last_doc_usage DATETIME
);

CREATE TABLE prv_history (
  id_prv LONG,
  time_stamp DATETIME,
  action_description TEXT COLLATE NOCASE,
  prv_value NUMBER
);
CREATE INDEX prv_history_id_prv ON prv_history (id_prv);

CREATE TABLE prv_rules (
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  data_type TEXT COLLATE NOCASE NOT NULL,
  decay_halflife NUMBER NOT NULL,
  creation_prv NUMBER NOT NULL,
  annotation_density_as_weight NUMBER NOT NULL DEFAULT 0,
  annotation_points_cap NUMBER NOT NULL DEFAULT 100
);

CREATE UNIQUE INDEX prv_rules_data_type ON prv_rules (data_type);

CREATE TABLE prv_rules_annotation (
  id_prv_rules LONG NOT NULL,
  id_annotation_type LONG NOT NULL,
  points NUMBER NOT NULL,
  cap NUMBER NOT NULL
);
CREATE UNIQUE INDEX prv_rules_annotation_id_prv_rules ON prv_rules_annotation (id_prv_rules, id_annotation_type);

CREATE TABLE search_term_history (
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  id_search_term LONG,
  time_stamp DATETIME
);
CREATE INDEX search_term_history_id_search_term ON search_term_history (id_search_term);

-- The search index.

-- Type 0 stands once in every component class, any other number once in all: a number names one kind of text.
-- A trimmed description stands once in a component class.
CREATE TABLE search_weight (
  type LONG NOT NULL,
  description TEXT COLLATE NOCASE NOT NULL,
  comp_type LONG NOT NULL
);
CREATE UNIQUE INDEX search_weight_description ON search_weight (description, comp_type);

CREATE TABLE root_word (
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  word TEXT COLLATE NOCASE NOT NULL
);
-- Ordered within groups of words that were added one after the other, for the same reason as word_index_id_root_word
-- below. Not unique: the indexer repeats a failing insert without end, so a refused word would halt it.
CREATE INDEX root_word_word ON root_word (id / 2048, word);

CREATE TABLE word_noise (
  term TEXT COLLATE NOCASE NOT NULL PRIMARY KEY
);

-- A document may hold equal rows twice (an untyped and a "normal" entry of one word), so there is no key.
CREATE TABLE word_index (
  id_document_object LONG,
  hit_count LONG,
  comp_type LONG,
  type LONG,
  id_root_word LONG,
  first_matching_sentence LONG
);
CREATE INDEX word_index_id_document_object ON word_index (id_document_object);
-- Ordered by word within groups of 16 documents. Ordered by word alone, each of a document's several hundred words would
-- write to a page of its own somewhere in the index; a group is some eighty pages, which the next documents write to as
-- well. A look-up by word goes from group to group (SQLite calls it a skip-scan), for which SQLite must know from
-- sqlite_stat1, at the end of this script, that groups are large.
CREATE INDEX word_index_id_root_word ON word_index (id_document_object / 16, id_root_word);

-- Which words may have lost their last hit since the indexer last deleted the words without any: those that are noted
-- here, and those with a key above the noted one. The indexer need not look at any other then.
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

CREATE TABLE ascii_sentences (
  id_document_object LONG,
  sentence_length LONG,
  content TEXT COLLATE NOCASE,
  num_sentence LONG
);
CREATE INDEX ascii_sentences_id_document_object ON ascii_sentences (id_document_object, num_sentence);

CREATE TABLE important_text (
  id_document LONG,
  type LONG
);
CREATE INDEX important_text_id_document ON important_text (id_document);

CREATE TABLE meta_tags (
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  id_document_share LONG,
  type LONG
);
CREATE INDEX meta_tags_id_document_share ON meta_tags (id_document_share);

CREATE TABLE metatag_entry (
  id_meta_tags LONG,
  id_root_word LONG,
  pos LONG
);
CREATE INDEX metatag_entry_id_meta_tags ON metatag_entry (id_meta_tags, pos);

CREATE TABLE annotation_section (
  id_document_share LONG,
  type LONG,
  sequence LONG
);
CREATE INDEX annotation_section_id_document_share ON annotation_section (id_document_share);

-- Kinds of indexed text. Component class 2 is body text, 3 annotations, 4 meta tags.

INSERT INTO search_weight (type, description, comp_type) VALUES
  (0, 'zzzDef', 2),
  (0, 'zzzDef', 3),
  (0, 'zzzDef', 4),
  (1, 'normal', 2),
  (2, 'title', 2),
  (3, 'document_path', 2),
  (4, 'heading', 2),
  (5, 'subject', 2),
  (6, 'author', 2),
  (7, 'from', 2),
  (8, 'to', 2),
  (9, 'keywords', 2),
  (20, 'comment', 3),
  (21, 'comment_anchor', 3),
  (22, 'general_comment', 3),
  (23, 'external_comment', 3),
  (40, 'user', 4),
  (41, 'anti', 4),
  (42, 'title', 4),
  (43, 'subject', 4),
  (44, 'author', 4),
  (45, 'from', 4),
  (46, 'to', 4),
  (47, 'cc', 4),
  (48, 'date', 4),
  (49, 'keywords', 4);

-- Annotations as the default rules below value them.

INSERT INTO prv_rules_annotation (id_prv_rules, id_annotation_type, points, cap) VALUES
  (1, 20, 5, 25),
  (1, 21, 2, 10),
  (1, 22, 5, 25),
  (1, 23, 5, 25);

-- Words that are too common to tell documents apart.

INSERT INTO word_noise (term) VALUES
  ('about'), ('above'), ('after'), ('again'), ('against'), ('all'), ('almost'), ('along'), ('already'), ('also'),
  ('although'), ('always'), ('am'), ('among'), ('an'), ('and'), ('another'), ('any'), ('are'), ('as'),
  ('at'), ('away'), ('be'), ('became'), ('because'), ('been'), ('before'), ('behind'), ('being'), ('below'),
  ('between'), ('both'), ('but'), ('by'), ('came'), ('can'), ('cannot'), ('could'), ('did'), ('do'),
  ('does'), ('doing'), ('done'), ('down'), ('during'), ('each'), ('either'), ('else'), ('enough'), ('even'),
  ('ever'), ('every'), ('few'), ('for'), ('from'), ('further'), ('get'), ('got'), ('had'), ('has'),
  ('have'), ('having'), ('he'), ('her'), ('here'), ('hers'), ('herself'), ('him'), ('himself'), ('his'),
  ('how'), ('however'), ('if'), ('in'), ('indeed'), ('instead'), ('into'), ('is'), ('it'), ('its'),
  ('itself'), ('just'), ('least'), ('less'), ('like'), ('may'), ('me'), ('might'), ('mine'), ('more'),
  ('most'), ('much'), ('must'), ('my'), ('myself'), ('neither'), ('never'), ('no'), ('nor'), ('not'),
  ('now'), ('of'), ('off'), ('often'), ('on'), ('once'), ('only'), ('onto'), ('or'), ('other'),
  ('our'), ('ours'), ('out'), ('over'), ('own'), ('per'), ('perhaps'), ('quite'), ('rather'), ('same'),
  ('shall'), ('she'), ('should'), ('since'), ('so'), ('some'), ('still'), ('such'), ('than'), ('that'),
  ('the'), ('their'), ('theirs'), ('them'), ('then'), ('there'), ('therefore'), ('these'), ('they'), ('this'),
  ('those'), ('though'), ('through'), ('thus'), ('to'), ('too'), ('toward'), ('under'), ('unless'), ('until'),
  ('up'), ('upon'), ('us'), ('very'), ('was'), ('we'), ('were'), ('what'), ('when'), ('where'),
  ('whether'), ('which'), ('while'), ('who'), ('whom'), ('whose'), ('why'), ('will'), ('with'), ('within'),
  ('without'), ('would'), ('yet'), ('you'), ('your'), ('yours');

-- How large the groups of the two grouped indexes are: a word stands in one row, a group in thousands.

ANALYZE sqlite_schema;
DELETE FROM sqlite_stat1 WHERE tbl IN ('root_word', 'word_index');
INSERT INTO sqlite_stat1 (tbl, idx, stat) VALUES
  ('root_word', 'root_word_word', '150000 2048 1'),
  ('word_index', 'word_index_id_document_object', '3000000 760'),
  ('word_index', 'word_index_id_root_word', '3000000 12160 2');

-- Relevance: the row 'zzzzDef' holds for every data type without one of its own, and sorts behind them all.
-- It stands last because of ROLLBACK: a shell goes on behind an error, and without it would add the kinds of text and
-- the rules once more to a file that is a library already.

INSERT OR ROLLBACK INTO prv_rules (id, data_type, decay_halflife, creation_prv, annotation_density_as_weight, annotation_points_cap)
  VALUES (1, 'zzzzDef', 90, 100, 0, 100);

COMMIT;
