"""What whole jobs of a text, a Markdown document and a mail write: log lines, statements and records."""

import re

import harness
from harness import DATE, INDEX, INDEX_NEW, MASTER, INDEXER, USER

TEXT = "The river rises early. Boats go down the river.\n\nO'Brien's boat is late.\n"
MARKDOWN = "# Harbour rules\n\nBoats enter by day.\n\n## Night\n\nNo *boat* enters by night.\n"
MAIL = """From: Ada Harbour <ada@example.org>
To: Ben Quay <ben@example.org>
Subject: Tide table
Date: Tue, 05 Mar 2002 09:07:04 +0000
MIME-Version: 1.0
Content-Type: multipart/mixed; boundary="part"

--part
Content-Type: text/plain; charset=utf-8

The tide table is attached.

--part
Content-Type: text/plain; charset=utf-8
Content-Disposition: attachment; filename="tides.txt"

Springtide comes at noon.

--part--
"""

STARTED = [
    "Logic: Attempting to start Indexer.",
    "Interest: Setting priority class to NORMAL.",
    "Crash Detect: Main.SetStatus",
    "UI: Starting...",
    "Crash Detect: Main.SetStatus",
    "UI: Checking for zombies...",
    "Crash Detect: Main.SetStatus",
    "UI: Connecting to database...",
    "Crash Detect: Main.SetStatus",
    "UI: Connected.",
    "Crash Detect: Main.SetStatus",
    "UI: Starting timers...",
    "Crash Detect: Main.SetStatus",
    "UI: Running.",
    "Interest: Indexer started.",
]

TICK = [
    "Crash Detect: Main.Timer Fire",
    "Crash Detect: Main.SetStatus",
    "UI: Checking file index queue...",
    "Crash Detect: Main.Timer - Looking for queue entry",
]

TICK_ENDS = ["Crash Detect: Main.Timer Action Complete"]

UNCOUNTED = -1  # sentences that the text plug-in is still cutting when it is asked for their number


def document_log(path, plugin, created, sentences, sub_documents=()):
    """What the pipeline writes about one document; `created` joins the arguments of its creation."""
    return [
        f"Interest: Indexer::IndexDocument - Starting: {path}",
        f"Logic: Attempting to create plugin: {plugin}",
        f"Logic: Created plugin: {plugin}",
        "Logic: Document Opened",
        "Logic: Document Setup",
        "Logic: CD: Doc Setup - Start",
        "Logic: CD: Doc Setup - Date",
        "Logic: CD: Doc Setup - Purged previous instances",
        f"Logic: CD: Doc Setup - (creating) {created}",
        "Logic: CD: Doc Setup - Document Created",
        "Logic: CD: Doc Setup - Created PRV and Doc Share",
        "Logic: Start Normal",
        f"Logic: Normal sentences {sentences}",
        "Logic: Start Important",
        "Logic: End Important",
        "Logic: Start Anno",
        "Logic: End Anno",
        "Logic: Start Meta",
        "Logic: End Meta",
        "Logic: Commit Words",
        "Logic: End Commit Words",
        "Logic: Commit sentences",
        "Logic: End Commit Sentences",
        *sub_documents,
        "Logic: Close plugin",
        f"Interest: Indexer::IndexDocument - Completed: {path}",
    ]


def job_log(path, document, queue_id=1):
    return ["Crash Detect: Main.Timer - Queue entry found", f"Logic: Do Index: {queue_id}",
            "Logic: Retrieve from queue", f"Logic: Index document: {path}", *document,
            "Logic: Finished index", "Logic: Delete from queue", "Logic: Do index complete"]


def masked(text):
    """With every moment replaced, in either of the forms that the service writes."""
    return re.sub(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d", "<moment>", DATE.sub("<moment>", text))


def type_clause(description, comp_type=2):
    return (" and " + "      ( search_weight.description='" + description + "' OR "
            + f"        (type=0 and NOT EXISTS (select type from search_weight where comp_type={comp_type}"
            + " and description='" + description + "'" + "       )))")


def important_text(description, id_document=1):
    return (f"INSERT INTO important_text (id_document, type) SELECT {id_document}, search_weight.type "
            "FROM search_weight WHERE search_weight.comp_type=2" + type_clause(description))


def new_word(word):
    return [f"INSERT INTO root_word ( word ) VALUES( '{word}')",
            "SELECT @@IDENTITY AS id_root_word FROM root_word"]


def word_row(hits, word_type, id_root_word, sentence, id_document=1):
    return ("INSERT INTO word_index ( id_document_object, hit_count, comp_type, type, id_root_word, "
            f"first_matching_sentence ) VALUES( {id_document}, {hits} , 2, {word_type}, {id_root_word}, {sentence} )")


def sentence_row(values):
    return ("INSERT INTO ascii_sentences(id_document_object, sentence_length, content, num_sentence) "
            f"VALUES({values})")


class WholeJob(harness.ServiceTest):
    def test_every_line_of_the_log_of_a_text_document_and_a_mail(self):
        library = self.library
        text = library.write("river.txt", TEXT)
        mail = library.write("tide.eml", MAIL.replace("\n", "\r\n"))
        library.queue(text, index_type=INDEX_NEW)
        library.queue(mail, data_type="eml")
        library.run()
        lines = [masked(line) for line in library.log()]
        text_log = document_log(text, harness.TEXT_PLUGIN,
                                f"{text}~~<moment>~txt~{text}~{len(TEXT)}~False~-1~{USER}", UNCOUNTED)
        expected = (STARTED + TICK + job_log(text, text_log) + TICK_ENDS
                    + TICK + job_log(mail, self.mail_log(mail), queue_id=2) + TICK_ENDS)
        self.assertEqual(lines[:len(expected)], expected)
        self.assertEqual(lines[len(expected):], TICK + TICK_ENDS)
        self.assertTrue(all(line.endswith("\r\n") for line in library.log_text().splitlines(keepends=True)))

    def mail_log(self, mail):
        library = self.library
        id_mail = library.document_id(mail)
        source, title, size = library.rows("SELECT source_url, title, data_size FROM document_object WHERE id = ?",
                                           (id_mail,))[0]
        attachment, attachment_size = library.rows("SELECT source_url, data_size FROM document_object "
                                                   "WHERE id_parent = ?", (id_mail,))[0]
        self.assertTrue(attachment.startswith(str(library.temporary)))
        created = f"{attachment}~{title} - tides~<moment>~txt~{mail}?attach=1~{attachment_size}~False~{id_mail}~{USER}"
        attachment_log = [f"Logic: Indexer::IndexDocument - Sub Doc: {attachment}",
                          *document_log(attachment, harness.TEXT_PLUGIN, created, UNCOUNTED)]
        return document_log(mail, harness.MAIL_PLUGIN,
                            f"{source}~{title}~<moment>~eml~{mail}~{size}~False~-1~{USER}", sentences=1,
                            sub_documents=attachment_log)

    def test_every_statement_of_a_text_document(self):
        path = self.library.write("river.txt", TEXT)
        self.library.queue(path, index_type=INDEX_NEW)
        self.library.run(trace=True)
        self.assertEqual(self.statements(), self.expected_statements(path))

    def statements(self):
        """Those of the first document's cycle, the moments masked."""
        lines = [masked(line) for line in self.library.trace().split("\n")]
        queue = "SELECT id FROM file_index_queue WHERE flag_dirty = false"
        first = lines.index(queue)
        return lines[first:lines.index(queue, first + 1)]

    def expected_statements(self, path):
        words = ["river", "rises", "early", "boats", "go", "brien", "boat", "late"]
        path_words = [word for part in re.split("[^a-z0-9]", path.lower()) for word in [part] if len(word) > 1]
        noise = {row[0] for row in self.library.rows("SELECT term FROM word_noise")}
        statements = [
            "SELECT id FROM file_index_queue WHERE flag_dirty = false",
            "UPDATE file_index_queue SET flag_dirty = true WHERE id = 1",
            "SELECT TOP 1 doc_path, index_type, date_time, data_type, user_id FROM file_index_queue "
            "WHERE id = 1 AND doc_path <> '' AND doc_path <> Null",
            "SELECT type, description, comp_type FROM search_weight",
            "DELETE * FROM root_word WHERE NOT EXISTS (SELECT id_root_word FROM word_index "
            "WHERE id_root_word = root_word.id)",
            "SELECT id, word FROM root_word",
            "SELECT term FROM word_noise",
            "BEGIN TRANSACTION",
            "UPDATE document_object SET location_invalid = TRUE, location_invalid_date = '<moment>' "
            f"WHERE saved_location = '{path}'",
            "INSERT INTO document_object (source_url,first_saved, title, data_type, saved_location, data_size, "
            f"snapshot, time_stamp, id_parent, id_owning_user ) VALUES ('{path}','<moment>', '', 'txt', '{path}', "
            f"{len(TEXT)}, false, '<moment>', -1, {USER} ) ",
            "SELECT @@IDENTITY AS id_document FROM document_object",
            "SELECT creation_prv FROM prv_rules WHERE data_type = 'txt' OR data_type = 'zzzzDef' "
            "ORDER BY data_type ASC",
            "INSERT INTO prv (last_prv, last_doc_usage ) VALUES (100, '<moment>' ) ",
            "SELECT @@IDENTITY AS id_prv FROM prv",
            "INSERT INTO prv_history (id_prv, time_stamp, action_description, prv_value ) "
            "VALUES (1, '<moment>', 'Document Created', 100 ) ",
            f"INSERT INTO document_share (id_document, id_user, id_prv ) VALUES (1, {USER}, 1 ) ",
            "COMMIT TRANSACTION",
        ]
        for word in words:
            statements += new_word(word)
        statements += [important_text("title"), important_text("document_path")]
        ids = {word: number for number, word in enumerate(words, 1)}
        hits = {}
        for word in path_words:
            if word not in noise:
                if word not in ids:
                    ids[word] = len(ids) + 1
                    statements += new_word(word)
                hits[word] = hits.get(word, 0) + 1
        normal, path_type = 1, 3
        statements += ["BEGIN TRANSACTION"]
        statements += [word_row(2 if word == "river" else 1, normal, ids[word],
                                1 if word in words[:3] else 2 if word in words[:5] else 3) for word in words]
        statements += [word_row(count, path_type, ids[word], 0) for word, count in hits.items()]
        statements += ["COMMIT TRANSACTION", "BEGIN TRANSACTION",
                       sentence_row("1, 1, ' ', -1"), sentence_row("1, 1, ' ', 0"),
                       sentence_row("1,22,'The river rises early.',1"),
                       sentence_row("1,24,'Boats go down the river.',2"),
                       sentence_row("1,25,'O''Brien''s boat is late.',3"),
                       "COMMIT TRANSACTION", f"DELETE * FROM file_index_queue WHERE doc_path = '{path}'"]
        return statements

    def test_every_record_of_a_markdown_document_and_a_mail(self):
        markdown = self.library.write("rules.md", MARKDOWN)
        mail = self.library.write("tide.eml", MAIL.replace("\n", "\r\n"))
        self.library.queue(markdown, data_type="md")
        self.library.queue(mail, data_type="eml", index_type=INDEX)
        self.library.run()
        self.assert_sound()
        self.assertEqual(self.library.queued(), [])
        self.check_markdown(self.library.document_id(markdown))
        self.check_mail(mail)
        self.assertEqual(self.library.get(MASTER, "DocsIndexedSinceCompaction"), "2")
        self.assertEqual(self.library.get(INDEXER, "IndexingQueueNumber"), "0")
        self.assertEqual(self.library.get(INDEXER, "IndexingKey"), "")
        self.assertEqual(self.library.get(INDEXER, "DeadMansSwitchSeconds"), "60")
        self.assertRegex(self.library.get(INDEXER, "LastTouch"), DATE)
        self.assert_no_plugin_survives()

    def check_markdown(self, id_document):
        library = self.library
        self.assertEqual(library.rows("SELECT title, data_type, id_parent, flag_indexing_failed "
                                      "FROM document_object WHERE id = ?", (id_document,)),
                         [("Harbour rules", "md", -1, 0)])
        self.assertEqual(library.words(id_document),
                         {"harbour": 1, "rules": 1, "boats": 1, "enter": 1, "day": 1, "night": 2, "boat": 1,
                          "enters": 1})
        self.assertEqual(library.words(id_document, description="title"), {"harbour": 1, "rules": 1})
        self.assertEqual(library.words(id_document, description="heading"), {"harbour": 1, "rules": 1, "night": 1})
        self.assertEqual(library.sentences(id_document),
                         [(1, "Harbour rules"), (2, "Boats enter by day."), (3, "Night"),
                          (4, "No boat enters by night."), (5, "Harbour rules"), (6, "Night")])

    def check_mail(self, path):
        library = self.library
        mail = library.document_id(path)
        self.assertEqual(library.rows("SELECT title, data_type, id_owning_user FROM document_object WHERE id = ?",
                                      (mail,)), [("Tide table", "eml", USER)])
        body = library.words(mail)
        self.assertEqual(body.get("attached"), 1)
        self.assertEqual(library.words(mail, description="document_path"), {})
        self.assertEqual(library.rows("SELECT id, title, data_type, location_invalid FROM document_object "
                                      "WHERE saved_location = ?", (path + "?attach=1",)),
                         library.rows("SELECT id, 'Tide table - tides', 'txt', 0 FROM document_object "
                                      "WHERE id_parent = ?", (mail,)))
        attachment = library.document_id(path + "?attach=1")
        self.assertEqual(library.words(attachment), {"springtide": 1, "comes": 1, "noon": 1})
        created = re.findall(r"Indexer::IndexDocument - Sub Doc: (.+)", "\n".join(library.log()))
        self.assertEqual(len(created), 1)
        self.assertTrue(created[0].startswith(str(library.temporary)))
        self.assertEqual(list(library.temporary.iterdir()), [])
        self.assertFalse(library.logged("Could not delete temp file"))


if __name__ == "__main__":
    harness.main()
