"""The installed unit is sound, as closed as the document says, and the agent runs under it.

usage: systemd_unit_test.py CMAKE BUILD DOCUMENT

There need be no systemd that runs. What the unit asks of the kernel for the process itself is set
up here in its place, from the unit's own lines: another user, no privileges, no network, and the
same system calls. That the file system is read-only but for two folders is left to systemd; here
the user may write nowhere else.
"""

import ctypes
import errno
import json
import os
import pathlib
import pwd
import re
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "waiting"))
import processes

CMAKE, BUILD, DOCUMENT = sys.argv[1:4]
EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
IS_ROOT = os.geteuid() == 0
# Not everybody who is root may make a network.
HAS_OWN_NETWORK = IS_ROOT and processes.run(
    ["unshare", "--net", "true"], stderr=subprocess.DEVNULL).returncode == 0
NOBODY = pwd.getpwnam("nobody")

LIBC = ctypes.CDLL(None, use_errno=True)
SECCOMP = ctypes.CDLL("libseccomp.so.2", use_errno=True)
SECCOMP.seccomp_init.restype = ctypes.c_void_p
ALLOW, KILL_PROCESS = 0x7FFF0000, 0x80000000
NOT_EQUAL, MASKED_EQUAL = 1, 7
PROT_WRITE, PROT_EXEC = 2, 4
AF_UNIX = 1
PR_SET_NO_NEW_PRIVS = 38
CLONE_NEWNET = 0x40000000


def run(*command, **options):
    return processes.run([str(part) for part in command], stdout=subprocess.PIPE,
                         stderr=subprocess.STDOUT, text=True, check=False, **options)


class Comparison(ctypes.Structure):
    _fields_ = [("argument", ctypes.c_uint), ("operator", ctypes.c_int),
                ("first", ctypes.c_uint64), ("second", ctypes.c_uint64)]


class Filter:
    """A filter of system calls, made before the process and put in force in it."""

    def __init__(self, otherwise):
        self.context = ctypes.c_void_p(SECCOMP.seccomp_init(ctypes.c_uint32(otherwise)))

    def add(self, action, call, *comparisons):
        number = SECCOMP.seccomp_syscall_resolve_name(call.encode())
        if number < 0:
            return  # not of this machine
        array = (Comparison * len(comparisons))(*comparisons)
        failed = SECCOMP.seccomp_rule_add_array(
            self.context, ctypes.c_uint32(action), number, len(comparisons), array)
        if failed:
            raise OSError(-failed, f"no rule can be made for {call}")

    def load(self):
        failed = SECCOMP.seccomp_load(self.context)
        if failed:
            raise OSError(-failed, "the filter cannot be put in force")


def refuse(error):
    return 0x00050000 | error


def calls_in(group):
    """The system calls of a set such as @system-service, or the one that is named."""
    if not group.startswith("@"):
        return {group}
    listed = run("systemd-analyze", "--no-pager", "syscall-filter", group).stdout
    words = [line.strip() for line in listed.splitlines()[1:]]
    return set().union(*(calls_in(word) for word in words if word and not word.startswith("#")))


class Unit:
    """A unit, or a drop-in alone."""

    def __init__(self, path):
        self.path = path
        self.lines = [line.split("=", 1) for line in path.read_text().splitlines()
                      if "=" in line and not line.startswith("#")]

    def values(self, key):
        return [value for name, value in self.lines if name == key]

    def value(self, key):
        (value,) = (value for value in self.values(key) if value)
        return value

    def allowed_calls(self):
        allowed = calls_in("@default")
        for value in self.values("SystemCallFilter"):
            named = set().union(*(calls_in(group) for group in value.lstrip("~").split()))
            allowed = allowed - named if value.startswith("~") else allowed | named
        return allowed

    def command(self, environment):
        return [re.sub(r"\$\{(\w+)\}", lambda match: environment[match[1]], word)
                for word in shlex.split(self.value("ExecStart"))]


class Sandbox:
    """What the unit says, for one process."""

    def __init__(self, unit):
        assert unit.value("MemoryDenyWriteExecute") == "yes"
        assert unit.value("RestrictAddressFamilies") == "AF_UNIX"
        assert unit.value("NoNewPrivileges") == "yes"
        self.arguments = Filter(ALLOW)
        both = PROT_WRITE | PROT_EXEC
        self.arguments.add(refuse(errno.EPERM), "mmap", Comparison(2, MASKED_EQUAL, both, both))
        for call in ["mprotect", "pkey_mprotect"]:
            self.arguments.add(refuse(errno.EPERM), call,
                               Comparison(2, MASKED_EQUAL, PROT_EXEC, PROT_EXEC))
        self.arguments.add(refuse(errno.EAFNOSUPPORT), "socket", Comparison(0, NOT_EQUAL, AF_UNIX))
        self.calls = Filter(KILL_PROCESS)
        for call in sorted(unit.allowed_calls()):
            self.calls.add(ALLOW, call)

    def enter(self):
        """Called in the process, before its program begins."""
        if HAS_OWN_NETWORK and LIBC.unshare(CLONE_NEWNET) != 0:
            raise OSError(ctypes.get_errno(), "no network of its own")
        if IS_ROOT:
            os.setgroups([])
            os.setgid(NOBODY.pw_gid)
            os.setuid(NOBODY.pw_uid)
        os.umask(0o077)
        LIBC.prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0)
        self.arguments.load()
        self.calls.load()


class InstalledUnit(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.scratch.cleanup)
        cls.folder = pathlib.Path(cls.scratch.name)
        cls.folder.chmod(0o755)
        installed = run(CMAKE, "--install", BUILD, "--prefix", cls.folder / "prefix")
        assert installed.returncode == 0, installed.stdout
        cls.agent = cls.folder / "prefix/bin/zel-agent"
        cls.unit = Unit(cls.folder / "prefix/lib/systemd/system/zel-agent.service")
        cls.secret = Unit(cls.folder / "prefix/share/zel-agent/secret-configuration.conf")


class SystemdUnit(InstalledUnit):
    def test_it_names_the_installed_program(self):
        self.assertEqual(self.unit.command(dict.fromkeys(
            ["CONFIGURATION_DIRECTORY", "RUNTIME_DIRECTORY", "STATE_DIRECTORY"], ""))[0],
            str(self.agent))

    def test_systemd_finds_nothing_wrong_with_it(self):
        verified = run("systemd-analyze", "--man=no", "verify", self.unit.path)
        self.assertEqual((verified.returncode, verified.stdout), (0, ""))

    def test_systemd_finds_nothing_wrong_with_it_and_a_secret_configuration(self):
        unit = self.folder / "with" / self.unit.path.name
        drop_in = unit.with_name(unit.name + ".d") / self.secret.path.name
        drop_in.parent.mkdir(parents=True)
        shutil.copy(self.unit.path, unit)
        shutil.copy(self.secret.path, drop_in)
        verified = run("systemd-analyze", "--man=no", "verify", unit)
        self.assertEqual((verified.returncode, verified.stdout), (0, ""))

    def test_a_secret_configuration_changes_only_where_the_agent_reads_it(self):
        command = self.unit.value("ExecStart")
        self.assertEqual(self.secret.value("ExecStart"),
                         command.replace("CONFIGURATION_DIRECTORY", "CREDENTIALS_DIRECTORY"))
        self.assertEqual(self.secret.values("ExecReload"), [""])
        self.assertEqual({name for name, _ in self.secret.lines},
                         {"LoadCredential", "ExecStart", "ExecReload"})

    def test_its_limits_are_those_of_the_document(self):
        document = pathlib.Path(DOCUMENT).read_text()
        for key in ["MemoryMax", "TimeoutStopSec"]:
            self.assertIn(f"`{key}={self.unit.value(key)}`", document)

    def test_it_is_as_closed_as_the_document_says(self):
        report = run("systemd-analyze", "--no-pager", "security", "--offline=true", self.unit.path)
        measured = re.search(r"Overall exposure level for zel-agent\.service: (\d+\.\d)",
                             report.stdout)
        self.assertTrue(measured, report.stdout)
        told = re.search(r"exposure level of (\d+\.\d)", pathlib.Path(DOCUMENT).read_text())
        self.assertTrue(told, f"{DOCUMENT} tells no exposure level")
        self.assertLessEqual(float(measured[1]), float(told[1]), report.stdout)


class UnderTheUnit(InstalledUnit):
    def setUp(self):
        self.home = pathlib.Path(tempfile.mkdtemp(dir=self.folder))
        self.home.chmod(0o755)
        self.environment = {"PATH": "/usr/bin:/bin"}
        for name, mode in [("CONFIGURATION", 0o755), ("RUNTIME", 0o700), ("STATE", 0o700)]:
            folder = self.home / name.lower()
            folder.mkdir()
            folder.chmod(mode)
            self.environment[f"{name}_DIRECTORY"] = str(folder)
            if IS_ROOT and name != "CONFIGURATION":
                os.chown(folder, NOBODY.pw_uid, NOBODY.pw_gid)
        self.configuration = self.home / "configuration/agent.json"
        self.socket = self.home / "runtime/agent.sock"
        self.trace = self.home / "state/trace.ring"
        self.configure("four-rules.json")
        self.sandbox = Sandbox(self.unit)

    def configure(self, example):
        shutil.copy(EXAMPLES / example, self.configuration)
        self.configuration.chmod(0o644)

    def start(self, unit=None):
        daemon = processes.start(
            self, (unit or self.unit).command(self.environment), env=self.environment,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, preexec_fn=self.sandbox.enter)
        self.assertEqual(processes.Lines(daemon.stdout).next(), f"serving on {self.socket}\n",
                         "the agent does not serve")
        return daemon

    def end(self, daemon):
        daemon.send_signal(signal.SIGTERM)
        self.assertEqual(processes.status_at_end(daemon), 0)

    def ask(self, *command):
        asked = run(self.agent, "ctl", "--socket", self.socket, "--json", *command)
        self.assertEqual(asked.returncode, 0, asked.stdout)
        return json.loads(asked.stdout)

    def messages(self):
        told = run(self.agent, "trace", "--json", self.trace)
        self.assertEqual(told.returncode, 0, told.stdout)
        return json.loads(told.stdout)["messages"]

    def test_the_agent_has_no_privileges(self):
        daemon = self.start()
        status = dict(line.split(":\t", 1) for line in
                      pathlib.Path(f"/proc/{daemon.pid}/status").read_text().splitlines())
        self.assertNotIn("0", status["Uid"].split())
        for held in ["CapPrm", "CapEff", "CapInh", "CapAmb"]:
            self.assertEqual(int(status[held], 16), 0, held)
        self.assertEqual(status["NoNewPrivs"], "1")
        self.assertEqual(status["Seccomp"], "2")
        if HAS_OWN_NETWORK:
            routes = pathlib.Path(f"/proc/{daemon.pid}/net/dev").read_text().splitlines()[2:]
            self.assertEqual([line.split(":")[0].strip() for line in routes], ["lo"])
        self.end(daemon)

    def test_the_agent_serves_and_reloads(self):
        daemon = self.start()
        before = self.ask("show", "actions")["actions"]
        self.assertTrue(before)
        self.ask("explain", "Ethernet1", "ipv4", "192.0.2.1", "to", "192.0.2.2")
        self.configure("four-rules-changed.json")
        daemon.send_signal(signal.SIGHUP)  # as ExecReload does
        errors = processes.Lines(daemon.stderr)
        while not (line := errors.next()).endswith(" applied\n"):
            self.assertIn("warning: ", line)
        self.assertNotEqual(self.ask("show", "actions")["actions"], before)
        self.end(daemon)
        self.assertFalse(self.socket.exists())

    def test_the_agent_serves_a_secret_configuration(self):
        credentials = self.home / "credentials"
        credentials.mkdir()
        self.environment["CREDENTIALS_DIRECTORY"] = str(credentials)
        name, source = self.secret.value("LoadCredential").split(":")
        self.assertEqual((name, source), ("agent.json", "/etc/zel-agent/agent.json"))
        shutil.move(self.configuration, credentials / name)
        daemon = self.start(self.secret)
        self.assertTrue(self.ask("show", "actions")["actions"])
        self.end(daemon)

    def test_the_agent_leaves_its_trace_and_comes_back(self):
        daemon = self.start()
        last = self.ask("show", "trace", "1")[0]
        daemon.kill()
        processes.status_at_end(daemon)
        self.assertEqual(self.messages()[-1], last)
        self.end(self.start())
        self.assertTrue(self.trace.with_name("trace.ring.previous").exists())

    def test_a_wrong_configuration_ends_it_for_good(self):
        self.configuration.write_text("{")
        self.assertEqual(self.unit.value("RestartPreventExitStatus"), "2")
        ended = run(*self.unit.command(self.environment), preexec_fn=self.sandbox.enter)
        self.assertEqual(ended.returncode, 2, ended.stdout)

    def test_what_the_agent_does_not_need_it_cannot_do(self):
        probe = ("import errno, mmap, socket\n"
                 "for attempt in [lambda: socket.socket(socket.AF_INET),\n"
                 "                lambda: mmap.mmap(-1, 4096, prot=7)]:\n"
                 "    try:\n"
                 "        attempt()\n"
                 "    except OSError as error:\n"
                 "        print(errno.errorcode[error.errno])\n")
        self.assertEqual(run("/usr/bin/python3", "-c", probe,
                             preexec_fn=self.sandbox.enter).stdout, "EAFNOSUPPORT\nEPERM\n")
        forbidden = run("/usr/sbin/chroot", "/", "/bin/true", preexec_fn=self.sandbox.enter)
        self.assertEqual(forbidden.returncode, -signal.SIGSYS)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
