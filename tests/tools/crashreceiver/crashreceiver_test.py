"""The receiver of crash reports: as a process over loopback, and its parser by itself.
crashreceiver_test.py RECEIVER [unittest arguments...]"""

import http.client
import importlib.machinery
import importlib.util
import json
import os
import pathlib
import random
import shutil
import signal
import socket
import stat
import subprocess
import sys
import tempfile
import threading
import time
import unittest

RECEIVER = os.path.abspath(sys.argv.pop(1))
BOUNDARY = "81e29ba4f957efe5916039f587fe3ed7"
TYPE = "multipart/form-data; boundary=" + BOUNDARY
LOG = b"Program:      corvane (Corvane)\n\x00\xff\r\n\r\n--81e29\r\n"


def part(name, content, file_name=None):
    file = b'; filename="%s"' % file_name.encode() if file_name is not None else b""
    kind = b"application/octet-stream" if file else b"text/plain; charset=utf-8"
    return (b"--%s\r\nContent-Disposition: form-data; name=\"%s\"%s\r\nContent-Type: %s\r\n\r\n%s\r\n"
            % (BOUNDARY.encode(), name.encode(), file, kind, content))


def form(*parts):
    return b"".join(parts) + b"--%s--\r\n" % BOUNDARY.encode()


def report(log=LOG, file_name="Corvane_2026-01-31_12-05-59_4711.crash"):
    return form(part("comments", "Größe\nzwei".encode()), part("crashLog", log, file_name),
                part("applicationName", b"Corvane"), part("systemInformationIncluded", b"0"))


def module():
    loader = importlib.machinery.SourceFileLoader("crashreceiver", RECEIVER)
    made = importlib.util.module_from_spec(importlib.util.spec_from_loader(loader.name, loader))
    loader.exec_module(made)
    return made


class Process(unittest.TestCase):
    """One receiver for each test, with a folder of its own."""

    options = ()

    def setUp(self):
        top = tempfile.mkdtemp(prefix="crashreceiver-test-")
        self.addCleanup(shutil.rmtree, top)
        self.folder = pathlib.Path(top) / "reports"
        self.messages = open(os.path.join(top, "messages"), "w+", encoding="ascii")
        self.addCleanup(self.messages.close)
        self.start()

    def start(self):
        self.receiver = subprocess.Popen(
            [sys.executable, "-B", RECEIVER, str(self.folder), "--port", "0", *self.options],
            stdout=subprocess.PIPE, stderr=self.messages, text=True)
        self.addCleanup(self.stop)
        words = self.receiver.stdout.readline().split()
        self.assertEqual(words[:-1], ["listening", "on", "127.0.0.1", "port"])
        self.port = int(words[-1])

    def stop(self, number=signal.SIGKILL):
        if self.receiver.poll() is None:
            self.receiver.send_signal(number)
        status = self.receiver.wait(timeout=30)
        self.receiver.stdout.close()
        return status

    def ask(self, method, body=None, **headers):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=30)
        try:
            connection.request(method, "/submit", body,
                               {name.replace("_", "-"): value for name, value in headers.items()})
            answer = connection.getresponse()
            return answer.status, answer.read()
        finally:
            connection.close()

    def post(self, body, content_type=TYPE):
        return self.ask("POST", body, Content_Type=content_type)

    def send(self, request):
        """Raw bytes; all that is answered until the receiver closes."""
        with socket.create_connection(("127.0.0.1", self.port), timeout=30) as connection:
            connection.sendall(request)
            connection.shutdown(socket.SHUT_WR)
            answer = b""
            while True:
                try:
                    block = connection.recv(65536)
                except ConnectionResetError:
                    return answer
                if not block:
                    return answer
                answer += block

    def stored(self):
        return sorted(path for path in self.folder.iterdir() if path.name != ".lock")

    def said(self):
        self.messages.flush()
        return pathlib.Path(self.messages.name).read_text(encoding="ascii")

    def assert_refused(self, answer, status=400):
        self.assertEqual(answer[0], status, answer)
        self.assertNotEqual(answer[1], b"ok\n")
        self.assertEqual(self.stored(), [])


class ReportTest(Process):
    def test_a_report_is_stored_and_answered_with_ok(self):
        self.assertEqual(self.post(report()), (200, b"ok\n"))
        (folder,) = self.stored()
        self.assertRegex(folder.name, r"^\d{4}-\d\d-\d\dT\d\d-\d\d-\d\dZ-[0-9a-f]{8}$")
        self.assertEqual(sorted(path.name for path in folder.iterdir()),
                         ["Corvane_2026-01-31_12-05-59_4711.crash", "report.json"])
        self.assertEqual((folder / "Corvane_2026-01-31_12-05-59_4711.crash").read_bytes(), LOG)
        facts = json.loads((folder / "report.json").read_text(encoding="ascii"))
        self.assertEqual(facts["fields"], {"comments": "Größe\nzwei", "applicationName": "Corvane",
                                           "systemInformationIncluded": "0"})
        self.assertEqual(facts["crashLog"], {"name": "Corvane_2026-01-31_12-05-59_4711.crash",
                                             "file": "Corvane_2026-01-31_12-05-59_4711.crash",
                                             "bytes": len(LOG)})

    def test_only_the_owner_may_read_it(self):
        self.post(report())
        (folder,) = self.stored()
        self.assertEqual(stat.S_IMODE(folder.stat().st_mode), 0o700)
        for path in folder.iterdir():
            self.assertEqual(stat.S_IMODE(path.stat().st_mode), 0o600)

    def test_each_report_has_a_folder_of_its_own(self):
        answers = []
        threads = [threading.Thread(target=lambda: answers.append(self.post(report(LOG * 1000))))
                   for _ in range(20)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(answers, [(200, b"ok\n")] * 20)
        self.assertEqual(len(self.stored()), 20)

    def test_the_names_of_files_lead_nowhere(self):
        names = {"../../../etc/passwd": "_.._.._etc_passwd", "": "crashLog", "..": "crashLog",
                 "/": "_", "report.json": "crashLog", ".hidden": "hidden", "a b\tc": "a_b_c",
                 'say "hi".crash': "say__hi_.crash", "Ünï.crash": "_n_.crash", "-rf": "rf",
                 "x" * 5000: "x" * 100, "nul\0byte": "nul_byte"}
        for name, kept in names.items():
            with self.subTest(name=name[:50]):
                self.assertEqual(self.post(report(file_name=name)), (200, b"ok\n"))
                (folder,) = self.stored()
                self.assertEqual(sorted(path.name for path in folder.iterdir()),
                                 sorted([kept, "report.json"]))
                facts = json.loads((folder / "report.json").read_text(encoding="ascii"))
                self.assertEqual(facts["crashLog"]["name"], name)
                shutil.rmtree(folder)
        self.assertEqual(list(self.folder.parent.glob("*passwd*")), [])

    def test_a_log_may_be_empty_and_a_part_too(self):
        nothing = b"--%s\r\n\r\n" % BOUNDARY.encode()
        self.assertEqual(self.post(form(nothing, part("crashLog", b"", "x.crash"))), (200, b"ok\n"))

    def test_the_boundary_may_be_quoted_and_another(self):
        body = report().replace(BOUNDARY.encode(), b"a b")
        self.assertEqual(self.post(body, 'Multipart/Form-Data; charset=x; boundary="a b"'),
                         (200, b"ok\n"))

    def test_neither_sender_nor_content_is_shown(self):
        self.post(report())
        self.assertIn(" stored 2", self.said())
        self.assertNotIn("127.0.0.1", self.said())
        self.assertNotIn("Corvane", self.said())


class RefusalTest(Process):
    options = ("--limit", "1")

    def test_what_is_no_form_is_refused(self):
        self.assert_refused(self.post(b"hello", "text/plain"))
        self.assert_refused(self.post(report(), "multipart/form-data"))
        self.assert_refused(self.post(report(), "multipart/form-data; boundary="))
        self.assert_refused(self.post(report(), "multipart/mixed; boundary=" + BOUNDARY))
        self.assert_refused(self.ask("POST", report()))
        self.assert_refused(self.post(b""))
        self.assert_refused(self.post(report(), "multipart/form-data; boundary=other"))

    def test_a_form_without_a_log_is_refused(self):
        self.assert_refused(self.post(form()))
        self.assert_refused(self.post(form(part("comments", b"x"))))
        self.assert_refused(self.post(form(part("crashLog", b"text"))))
        self.assert_refused(self.post(form(part("photo", b"x", "a.jpg"))))

    def test_a_form_with_something_twice_is_refused(self):
        log = part("crashLog", LOG, "x.crash")
        self.assert_refused(self.post(form(log, log)))
        self.assert_refused(self.post(form(log, part("a", b"1"), part("a", b"2"))))
        self.assert_refused(self.post(form(part("crashLog", b"1"), log)))
        self.assert_refused(self.post(form(log, part("crashLog", b"1"))))

    def test_a_form_that_is_cut_short_is_refused(self):
        whole = report()
        for end in range(len(whole) - 2):
            if end % 7 == 0 or end > len(whole) - 50:
                self.assert_refused(self.post(whole[:end]))

    def test_text_that_is_not_utf8_is_refused(self):
        self.assert_refused(self.post(form(part("comments", b"\xff"),
                                           part("crashLog", LOG, "x.crash"))))

    def test_very_many_parts_are_refused(self):
        self.assert_refused(self.post(form(*(part(f"n{i}", b"") for i in range(5000)),
                                           part("crashLog", LOG, "x.crash"))))

    def test_more_than_the_limit_is_refused(self):
        self.assert_refused(self.post(report(b"x" * (1 << 20))), 413)
        self.assert_refused(self.post(report(b"x" * (20 << 20))), 413)
        room = (1 << 20) - len(report(b""))
        self.assertEqual(self.post(report(b"x" * room)), (200, b"ok\n"))

    def test_what_waits_for_leave_to_send_too_much_gets_none(self):
        answer = self.send(b"POST / HTTP/1.1\r\nHost: x\r\nExpect: 100-continue\r\n"
                           b"Content-Length: 99999999\r\n\r\n")
        self.assertTrue(answer.startswith(b"HTTP/1.1 413 "), answer)

    def test_the_length_must_be_said(self):
        head = b"POST / HTTP/1.1\r\nHost: x\r\nContent-Type: " + TYPE.encode() + b"\r\n"
        for header, status in ((b"", b"411"), (b"Transfer-Encoding: chunked\r\n", b"411"),
                               (b"Content-Length: -1\r\n", b"400"),
                               (b"Content-Length: 1e3\r\n", b"400"),
                               (b"Content-Length: " + b"9" * 5000 + b"\r\n", b"400"),
                               (b"Content-Length: 1\r\nContent-Length: 2\r\n", b"400")):
            answer = self.send(head + header + b"\r\n" + report())
            self.assertTrue(answer.startswith(b"HTTP/1.1 " + status + b" "), (header, answer))
        self.assertEqual(self.stored(), [])

    def test_a_body_that_ends_early_is_refused(self):
        body = report()
        answer = self.send(b"POST / HTTP/1.1\r\nContent-Type: %s\r\nContent-Length: %d\r\n\r\n%s"
                           % (TYPE.encode(), len(body), body[:-20]))
        self.assertTrue(answer.startswith(b"HTTP/1.1 400 "), answer)
        self.assertEqual(self.stored(), [])

    def test_other_methods_store_nothing(self):
        status, text = self.ask("GET")
        self.assertEqual((status, text.count(b"\n")), (200, 1))
        self.assertEqual(self.ask("HEAD"), (200, b""))
        self.assert_refused(self.ask("PUT", report(), Content_Type=TYPE), 501)

    def test_nothing_of_a_request_forges_a_message(self):
        self.send(b"POST \x1b[2J\n HTTP/1.1\r\n\r\n")
        self.send(b"BREW /\x1b[2J HTTP/1.1\r\nHost: x\r\n\r\n")
        self.assertNotIn("\x1b", self.said())

    def test_a_folder_that_cannot_be_written_is_said(self):
        shutil.rmtree(self.folder)
        self.assertEqual(self.post(report())[0], 500)
        self.folder.mkdir()
        self.assertEqual(self.post(report()), (200, b"ok\n"))


class LifeTest(Process):
    def test_sigterm_ends_it_cleanly(self):
        self.assertEqual(self.stop(signal.SIGTERM), 0)
        self.assertEqual(self.said(), "")

    def test_sigint_ends_it_cleanly(self):
        self.assertEqual(self.stop(signal.SIGINT), 0)
        self.assertEqual(self.said(), "")

    def test_a_report_under_way_is_still_taken(self):
        body = report()
        with socket.create_connection(("127.0.0.1", self.port), timeout=30) as connection:
            connection.sendall(b"POST / HTTP/1.1\r\nContent-Type: %s\r\nContent-Length: %d\r\n"
                               b"Expect: 100-continue\r\n\r\n" % (TYPE.encode(), len(body)))
            self.assertTrue(connection.recv(4096).startswith(b"HTTP/1.1 100 "))
            connection.sendall(body[:10])
            time.sleep(0.2)  # it is read now; a longer wait would change nothing
            self.receiver.send_signal(signal.SIGTERM)
            time.sleep(0.3)
            connection.sendall(body[10:])
            answer = b""
            while not answer.endswith(b"\r\n\r\nok\n"):
                block = connection.recv(4096)
                self.assertTrue(block, answer)
                answer += block
        self.assertEqual(self.receiver.wait(timeout=30), 0)
        self.assertEqual(len(self.stored()), 1)

    def test_a_second_receiver_for_the_folder_is_refused(self):
        second = subprocess.run([sys.executable, "-B", RECEIVER, str(self.folder), "--port", "0"],
                                capture_output=True, text=True, timeout=30, check=False)
        self.assertEqual(second.returncode, 1)
        self.assertIn("another receiver", second.stderr)

    def test_what_a_killed_one_left_is_removed(self):
        self.stop()
        left = self.folder / ".incoming-2026-01-31T12-05-59Z-00000000"
        left.mkdir()
        (left / "x.crash").write_bytes(b"half")
        self.start()
        self.assertEqual(self.stored(), [])

    def test_a_port_that_is_taken_is_said(self):
        second = subprocess.run([sys.executable, "-B", RECEIVER, str(self.folder) + "2",
                                 "--port", str(self.port)],
                                capture_output=True, text=True, timeout=30, check=False)
        self.assertEqual(second.returncode, 1)
        self.assertIn(f"port {self.port}", second.stderr)
        self.assertNotIn("Traceback", second.stderr)

    def test_help_says_what_is_stored(self):
        text = subprocess.run([sys.executable, "-B", RECEIVER, "--help"], capture_output=True,
                              text=True, timeout=30, check=True).stdout
        for word in ("FOLDER", "--port", "--limit", "report.json", "TLS"):
            self.assertIn(word, text)


class InsideTest(unittest.TestCase):
    """The receiver in this process, where its steps can be slowed down and seen."""

    def setUp(self):
        self.parts = module()
        top = tempfile.mkdtemp(prefix="crashreceiver-test-")
        self.addCleanup(shutil.rmtree, top)
        store = self.parts.Store(pathlib.Path(top) / "reports")
        self.addCleanup(store.lock.close)
        self.server = self.parts.Server(("127.0.0.1", 0), store, 1 << 20)
        self.server.say = lambda text: None
        self.serving = threading.Thread(target=self.server.serve_forever, args=(0.01,))
        self.serving.start()
        self.addCleanup(self.end)

    def end(self):
        self.server.shutdown()
        self.serving.join()
        self.server.server_close()

    def connect(self):
        connection = socket.create_connection(("127.0.0.1", self.server.server_port), timeout=30)
        self.addCleanup(connection.close)
        return connection

    @staticmethod
    def head(*lines):
        return "\r\n".join(("POST / HTTP/1.1", "Content-Type: " + TYPE, *lines, "", "")).encode()

    @staticmethod
    def answer(connection):
        """All up to the end; what a connection that was cut did not bring is missing."""
        answer = b""
        try:
            while block := connection.recv(65536):
                answer += block
        except ConnectionError:
            pass
        return answer

    def test_the_end_waits_for_the_answer_to_what_is_stored(self):
        stored, given = threading.Event(), threading.Event()
        at_once = self.parts.Handler.answer

        def late(handler, status, text):
            stored.set()
            time.sleep(0.5)
            at_once(handler, status, text)
            given.set()

        self.parts.Handler.answer = late
        connection = self.connect()
        connection.sendall(self.head(f"Content-Length: {len(report())}") + report())
        self.assertTrue(stored.wait(30))
        self.end()
        self.server.wait_for_reports()
        self.assertTrue(given.is_set())
        self.assertTrue(self.answer(connection).endswith(b"\r\n\r\nok\n"))

    def test_the_end_waits_for_no_report_that_never_comes(self):
        self.parts.SECONDS_TO_END = 0.2
        connection = self.connect()
        connection.sendall(self.head("Content-Length: 10"))
        while not self.server.posts:
            time.sleep(0.01)
        self.end()
        self.server.wait_for_reports()
        self.assertEqual(self.server.posts, 1)

    def test_ok_is_said_of_what_a_power_cut_cannot_take(self):
        steps = []
        fsync, rename = os.fsync, pathlib.Path.rename

        def seen_fsync(descriptor):
            steps.append(pathlib.Path(os.readlink(f"/proc/self/fd/{descriptor}")))
            fsync(descriptor)

        def seen_rename(path, target):
            steps.append("rename")
            return rename(path, target)

        self.addCleanup(setattr, os, "fsync", fsync)
        self.addCleanup(setattr, pathlib.Path, "rename", rename)
        os.fsync, pathlib.Path.rename = seen_fsync, seen_rename
        made = self.parts.parse(TYPE, report())
        name = self.server.store.add(made)
        folder = self.server.store.folder
        incoming = folder / (self.parts.INCOMING + name)
        self.assertEqual(steps, [incoming / made.log_name, incoming / "report.json", incoming,
                                 "rename", folder])

    def test_a_refusal_reaches_who_sends_much(self):
        self.parts.SECONDS_FOR_PLACE = 0.1
        for _ in range(self.parts.AT_ONCE):
            self.server.places.acquire()
        much = b"x" * (1 << 20)
        for lines, status in ((("Content-Length: 1048576",), b"503"), ((), b"411"),
                              (("Content-Length: 1e6",), b"400"),
                              (("Content-Length: 1048577",), b"413")):
            with self.subTest(status=status):
                connection = self.connect()
                connection.sendall(self.head(*lines))
                for _ in range(8):  # more than the kernel keeps for who does not read it
                    connection.sendall(much)
                    time.sleep(0.02)
                connection.shutdown(socket.SHUT_WR)
                answer = self.answer(connection)
                self.assertTrue(answer.startswith(b"HTTP/1.1 " + status + b" "), answer)
                self.assertEqual(answer.count(b"HTTP/1.1 "), 1)

    def test_a_header_that_drips_comes_to_an_end(self):
        self.parts.SECONDS_FOR_HEADER = 0.5
        connection = self.connect()
        connection.settimeout(0.1)
        connection.sendall(b"POST / HTTP/1.1\r\n")
        begin = time.monotonic()
        while time.monotonic() < begin + 20:
            try:
                connection.sendall(b"X-Slow: 1\r\n")
                if not connection.recv(1):
                    break
            except socket.timeout:
                continue
            except ConnectionError:
                break
        self.assertLess(time.monotonic(), begin + 20)

    def test_a_body_that_drips_is_refused(self):
        self.parts.SECONDS_FOR_REPORT = 0.5
        connection = self.connect()
        connection.sendall(self.head("Content-Length: 100000"))
        connection.settimeout(0.1)
        answer = b""
        begin = time.monotonic()
        while not answer and time.monotonic() < begin + 20:
            connection.sendall(b"x")
            try:
                answer = connection.recv(65536)
            except socket.timeout:
                continue
        self.assertTrue(answer.startswith(b"HTTP/1.1 408 "), answer)


class HostileTest(Process):
    def test_after_thousands_of_damaged_bodies_it_still_works(self):
        """The parser raises nothing but its own refusal, and takes only what holds a log."""
        parser = module()
        chance = random.Random(20260131)
        whole = report()
        pieces = [b"\r\n", b"--", BOUNDARY.encode(), b"\0", b'"', b"\xff\xfe", b":", b";",
                  b"Content-Disposition: form-data; name=\"crashLog\"; filename=\"", b"\r\n\r\n",
                  b"--" + BOUNDARY.encode() + b"\r\n", b"../" * 9, b"name=\"" + b"a" * 200 + b'"']
        taken = 0
        for _ in range(20000):
            body = bytearray(whole)
            for _ in range(chance.randrange(1, 8)):
                at = chance.randrange(len(body) + 1)
                until = min(len(body), at + chance.choice((0, 1, 2, 30, 400)))
                body[at:until] = chance.choice((b"", chance.choice(pieces),
                                                bytes(chance.randrange(256) for _ in range(9))))
            kind = TYPE if chance.random() < 0.9 else chance.choice(
                (None, "", "multipart/form-data;boundary=\"", TYPE + "\xff", TYPE * 3,
                 "multipart/form-data; boundary=\xe9", "multipart/form-data; boundary=--"))
            try:
                made = parser.parse(kind, bytes(body))
            except parser.NoReport:
                continue
            taken += 1
            self.assertIsInstance(made.log, bytes)
            name = parser.safe_name(made.log_name)
            self.assertRegex(name, r"\A[A-Za-z0-9_][A-Za-z0-9._-]{0,99}\Z")
            self.assertNotEqual(name, "report.json")
            json.dumps(made.fields)
        self.assertGreater(taken, 100)

    def test_rubbish_on_the_wire_harms_nothing(self):
        chance = random.Random(4711)
        whole = (b"POST / HTTP/1.1\r\nHost: x\r\nContent-Type: %s\r\nContent-Length: %d\r\n\r\n%s"
                 % (TYPE.encode(), len(report()), report()))
        for _ in range(300):
            request = bytearray(whole[:chance.choice((20, 120, len(whole)))])
            for _ in range(chance.randrange(1, 12)):
                request[chance.randrange(len(request))] = chance.randrange(256)
            self.send(bytes(request))
        self.assertIsNone(self.receiver.poll())
        self.assertNotIn("failed:", self.said())
        self.assertEqual(self.post(report()), (200, b"ok\n"))
        self.assertEqual(list(self.folder.glob(".incoming-*")), [])


if __name__ == "__main__":
    unittest.main()
