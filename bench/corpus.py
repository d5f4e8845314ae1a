"""The documents that are measured with: a folder of the user's, or a large corpus made of the plain-text sources in
Debian's documentation packages, kept outside the repository for the next time."""
import gzip
import hashlib
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tarfile
import tempfile

from figures import megabytes

TEXT_TYPES = {".txt", ".md"}
MAIL_TYPES = {".eml"}

# Where the documents of the large corpus come from.
PACKAGES = ("linux-doc", "python3-doc", "perl-doc", "vim-runtime", "llvm-15-doc", "git-doc", "python-sqlalchemy-doc",
            "neutron-doc", "nova-doc", "cinder-doc", "cmake-doc", "buildbot-doc", "sphinx-doc")
# These hold nothing and depend on the package of the present version.
POINTERS = ("linux-doc", "python3-doc")
SOURCES = (".rst", ".txt", ".pod", ".md", ".adoc")
SMALLEST, LARGEST = 4_000, 600_000  # bytes of a document; what is smaller is mostly a list of links
OTHER_BYTES = bytes(range(128, 256))
MOST = 4_000                        # documents
FEWEST = 1_000                      # less is no large corpus
# Raised when the selection changes, so that a folder of an older one is made anew.
EDITION = 1


def large_corpus(note):
    """The folder of the large corpus and its description; makes it when it is not there or not complete."""
    cache = pathlib.Path(os.environ.get("XDG_CACHE_HOME") or pathlib.Path.home() / ".cache") / "tyindexer-bench"
    folder, description = cache / "corpus", cache / "corpus.json"
    try:
        made = json.loads(description.read_text())
        if made["edition"] == EDITION and made["documents"] == sum(1 for file in folder.rglob("*.txt")):
            tell(made, folder, note)
            return folder, made
    except (OSError, ValueError, KeyError):
        pass
    note(f"Making the large corpus in {folder} ...")
    shutil.rmtree(folder, ignore_errors=True)
    description.unlink(missing_ok=True)
    made = make_large_corpus(folder)
    if made["documents"] < FEWEST:
        sys.exit(f"only {made['documents']} documents could be had from the packages {', '.join(PACKAGES)}; "
                 "name a folder with documents: script/bench FOLDER")
    description.write_text(json.dumps(made, indent=2) + "\n")
    tell(made, folder, note)
    return folder, made


def tell(made, folder, note):
    note(f"Large corpus: {folder}: {made['documents']} documents, {megabytes(made['bytes'])} MB, from")
    for name, source in made["packages"].items():
        note(f"  {name} {source['version']}: {source['documents']} documents, {megabytes(source['bytes'])} MB")


def make_large_corpus(folder):
    seen, packages = set(), {}
    with tempfile.TemporaryDirectory() as downloads:
        for name in PACKAGES:
            archive = download(name, pathlib.Path(downloads))
            if archive is not None:
                package, version = (subprocess.run(["dpkg-deb", "--field", archive, field], check=True, text=True,
                                                   stdout=subprocess.PIPE).stdout.strip()
                                    for field in ("Package", "Version"))
                packages[package] = {"version": version, **unpack(archive, folder / package, seen)}
    return {"edition": EDITION, "documents": sum(each["documents"] for each in packages.values()),
            "bytes": sum(each["bytes"] for each in packages.values()), "packages": packages}


def download(name, folder):
    """The archive of a package, none when it cannot be had."""
    if name in POINTERS:
        done = subprocess.run(["apt-cache", "depends", "--important", name], stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, text=True)
        name = next((line.split()[1] for line in done.stdout.splitlines() if "Depends:" in line), name)
    done = subprocess.run(["apt-get", "download", "--quiet", name], cwd=folder, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True)
    archive = next(folder.glob(f"{name}_*.deb"), None)
    if archive is None:
        print(f"  {name} cannot be had: {done.stdout.strip() or 'apt-get download failed'}", flush=True)
    return archive


def unpack(archive, folder, seen):
    """Writes the documents of an archive, in the order of their names, as .txt files."""
    documents, size = 0, 0
    for name, content in sorted(sources(archive)):
        digest = hashlib.sha256(content).digest()
        if len(seen) >= MOST or digest in seen or not is_english_text(content):
            continue
        seen.add(digest)
        target = folder / f"{name}.txt"
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_bytes(content)
        documents += 1
        size += len(content)
    return {"documents": documents, "bytes": size}


def sources(archive):
    with subprocess.Popen(["dpkg-deb", "--fsys-tarfile", archive], stdout=subprocess.PIPE) as unpacker:
        with tarfile.open(fileobj=unpacker.stdout, mode="r|") as tar:
            for member in tar:
                name = member.name.removesuffix(".gz").removeprefix("./")
                # Sphinx adds ".txt" to the source's own name; what stays is unique but for copies of one text.
                if member.isfile() and name.endswith(SOURCES) and member.size <= LARGEST:
                    content = tar.extractfile(member).read()
                    content = gzip.decompress(content) if member.name.endswith(".gz") else content
                    yield name.removesuffix(".txt").removeprefix("usr/share/"), content


def is_english_text(content):
    """A rough but stable choice: of a fit size, and nearly all of it in the characters that English is written in."""
    if not SMALLEST <= len(content) <= LARGEST or b"\0" in content:
        return False
    try:
        content.decode()
    except UnicodeDecodeError:
        return False
    return len(content.translate(None, OTHER_BYTES)) >= 0.98 * len(content)


class Corpus:
    """The files of some types, linked or copied to a folder of their own so that all programs read the same ones."""

    def __init__(self, folder, types, name, work, copies=1, most=None, warm=False):
        self.name, self.folder, self.warm = name, work / "corpus" / name, warm
        found = sorted(file for file in folder.rglob("*") if file.suffix.lower() in types and file.is_file())
        found = every_nth(found, most)
        self.files = [place(file, self.folder / f"copy{copy + 1}" / file.relative_to(folder))
                      for copy in range(copies) for file in found]
        self.files.sort()
        self.bytes = sum(file.stat().st_size for file in self.files)

    def moved(self, name):
        """The same files in another folder, so that their paths are new to a library."""
        other = object.__new__(Corpus)
        other.name, other.folder, other.bytes, other.warm = self.name, self.folder.parent / name, self.bytes, self.warm
        other.files = [place(file, other.folder / file.relative_to(self.folder)) for file in self.files]
        return other

    def prepare_run(self):
        """Has the next program read every file from the disk, as a service finds the documents that are put into its
        queue, or, when warm, find them all in memory. Otherwise a program would gain by what the one before it has just
        read. What that one wrote is on the disk before the next begins."""
        os.sync()
        for path in self.files:
            with open(path, "rb") as file:
                if self.warm:
                    file.read()
                else:
                    os.posix_fadvise(file.fileno(), 0, 0, os.POSIX_FADV_DONTNEED)

    def remove(self):
        shutil.rmtree(self.folder)

    def described(self):
        return {"documents": len(self.files), "bytes": self.bytes}

    def __str__(self):
        return f"{len(self.files)} {self.name} files ({megabytes(self.bytes)} MB)"


def every_nth(files, most):
    """At most so many of the files, taken evenly: the packages' documents differ."""
    if most is None or len(files) <= most:
        return files
    return [files[number * len(files) // most] for number in range(most)]


def place(file, target):
    target.parent.mkdir(parents=True, exist_ok=True)
    try:
        os.link(file, target)
    except OSError:
        shutil.copyfile(file, target)
    return target
