"""A bare Debian system in a folder: packages are installed and tried in it as on a machine that has nothing else.

Each command runs in namespaces of its own: what it mounts and what it leaves running is gone when it ends, however it
ends. The system is made once and kept as an archive, with the packages that were downloaded for it.
"""

import hashlib
import inspect
import os
import pathlib
import re
import shutil
import stat
import subprocess
import tempfile

ENTER = """
mount -t proc proc "$0/proc"
mount -t tmpfs tmpfs "$0/dev/shm"
mount --bind "$DOWNLOADS" "$0/var/cache/apt/archives"
exec chroot "$0" "$@"
"""
# A command ends with the test that started it, however that ends.
ISOLATED = ["setpriv", "--pdeathsig", "KILL",
            "unshare", "--mount", "--propagation", "private", "--pid", "--fork", "--kill-child"]
APT_SETTINGS = re.compile(r"^Acquire::(?:https?|ftp|Check-\w[\w-]*|Retries|Languages|proxy)\b.*;$", re.IGNORECASE)
# What apt, dpkg and the loader keep for themselves.
STATE = ("var/lib/apt", "var/lib/dpkg", "var/cache/apt", "var/cache/ldconfig", "var/log", "etc/ld.so.cache", "packages")
NOBODY = "65534"


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def release():
    """The Debian release of this machine, for which its packages are built; empty on other systems."""
    fields = dict(re.findall(r'^(\w+)="?([^"\n]*)', pathlib.Path("/etc/os-release").read_text(encoding="utf-8"), re.M))
    return fields.get("VERSION_CODENAME", "") if fields.get("ID") == "debian" else ""


def sources():
    """What this machine's apt installs from, of Debian's own: (address, suite, component), the release itself first."""
    lines = output_of("apt-get", "indextargets", "--no-release-info", "--format", "$(REPO_URI) $(RELEASE) $(COMPONENT)",
                      "Created-By: Packages").split("\n")
    found = {tuple(line.split()) for line in lines if len(line.split()) == 3}
    return sorted((entry for entry in found if re.fullmatch(release() + r"(-updates|-security)?", entry[1])),
                  key=lambda entry: (entry[1] != release(), entry))


def why_not():
    """Why no bare system can be made here, or None."""
    if os.geteuid() != 0:
        return "only root can make a bare system"
    if not release():
        return "this is not a release of Debian"
    if not shutil.which("debootstrap"):
        return "debootstrap is missing: run tools/setup"
    if subprocess.run(ISOLATED + ["true"], capture_output=True, check=False).returncode != 0:
        return "namespaces are not allowed here"
    if not sources():
        return f"apt has no source for {release()}"
    address, suite, _ = sources()[0]
    with tempfile.TemporaryDirectory() as folder:
        command = ["/usr/lib/apt/apt-helper", "-o", "Acquire::http::Timeout=20", "download-file"]
        reached = subprocess.run([*command, f"{address}dists/{suite}/Release", f"{folder}/Release"], capture_output=True, check=False)
    return None if reached.returncode == 0 else "apt's mirror is out of reach"


class BareSystem:
    def __init__(self, cache, folder):
        self.cache = pathlib.Path(cache)
        self.root = pathlib.Path(folder)
        self.downloads = self.cache / "downloads"
        self.downloads.mkdir(parents=True, exist_ok=True)
        settings = [line for line in output_of("apt-config", "dump").splitlines() if APT_SETTINGS.match(line)]
        self.apt_conf = "\n".join(settings) + "\n"
        self.sources_list = "".join(f"deb {' '.join(entry)}\n" for entry in sources())
        self.remove()
        shape = hashlib.sha256((self.apt_conf + self.sources_list + inspect.getsource(self._make)).encode())
        archive = self.cache / f"{release()}-{shape.hexdigest()[:12]}.tar.zst"
        if archive.is_file():
            self.root.mkdir(parents=True)
            subprocess.run(["tar", "-xf", archive, "--zstd", "--numeric-owner", "-C", self.root], check=True)
        else:
            self._make()
            part = f"{archive}.part"
            subprocess.run(["tar", "-cf", part, "--zstd", "--numeric-owner", "-C", self.root, "."], check=True)
            os.replace(part, archive)
        self._share_network()

    def _make(self):
        environment = dict(os.environ)
        proxy = re.search(r'^Acquire::http::Proxy "([^"]+)"', self.apt_conf, re.M)
        if proxy:
            environment.setdefault("http_proxy", proxy.group(1))
        # In the same namespaces: what an interrupted debootstrap had mounted is gone with it.
        subprocess.run(ISOLATED + ["debootstrap", "--variant=minbase", release(), self.root, sources()[0][0]],
                       env=environment, check=True, stdout=subprocess.DEVNULL)
        etc = self.root / "etc"
        (etc / "apt/sources.list").write_text(self.sources_list, encoding="utf-8")
        (etc / "apt/apt.conf.d/99host").write_text(self.apt_conf, encoding="utf-8")
        # It is thrown away, so nothing needs to reach the disk.
        (etc / "dpkg/dpkg.cfg.d/unsafe-io").write_text("force-unsafe-io\n", encoding="utf-8")
        policy = self.root / "usr/sbin/policy-rc.d"
        policy.write_text("#!/bin/sh\nexit 101\n", encoding="utf-8")  # no service is started
        policy.chmod(0o755)
        self._share_network()
        self.run("apt-get", "update", "--quiet")
        for package in (self.root / "var/cache/apt/archives").glob("*.deb"):
            package.unlink()

    def _share_network(self):
        for name in ("resolv.conf", "hosts"):
            shutil.copyfile(f"/etc/{name}", self.root / "etc" / name)

    def remove(self):
        if self.root.exists():
            shutil.rmtree(self.root)

    def run(self, *command, user=False, variables=None, check=True, timeout=300):
        """Runs a command in the system: as root, or as somebody without rights, at home in /tmp/home."""
        environment = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "HOME": "/root", "LC_ALL": "C.UTF-8",
                       "DEBIAN_FRONTEND": "noninteractive", "DOWNLOADS": str(self.downloads)}
        environment |= {name: value for name, value in os.environ.items() if name.lower().endswith("_proxy")}
        if user:
            command = ("setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups", *command)
            environment["HOME"] = "/tmp/home"
            self.home().mkdir(exist_ok=True)
            os.chown(self.home(), int(NOBODY), int(NOBODY))
        result = subprocess.run(
            ISOLATED + ["sh", "-ec", ENTER, str(self.root), *command], env=environment | (variables or {}),
            stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False, timeout=timeout)
        if check and result.returncode != 0:
            raise AssertionError(f"{' '.join(command)}: status {result.returncode}\n{result.stdout}{result.stderr}")
        return result

    def home(self):
        return self.root / "tmp/home"

    def _apt(self, *arguments):
        command = ("apt-get", "--yes", "--quiet", "--no-install-recommends", *arguments)
        result = self.run(*command, check=False, timeout=900)
        if result.returncode != 0:  # the lists may be older than what the mirror still has
            self.run("apt-get", "update", "--quiet")
            result = self.run(*command, timeout=900)
        return result.stdout

    def install(self, *names):
        """Packages of the mirror."""
        self._apt("install", *names)

    def install_files(self, files):
        """Package files, after everything that apt finds they need. Returns what the system held in between."""
        (self.root / "packages").mkdir(exist_ok=True)
        local = []
        for file in files:
            shutil.copy(file, self.root / "packages")
            local.append(f"/packages/{file.name}")
        own = {file.name.split("_")[0] for file in files}
        planned = re.findall(r"^Inst (\S+)", self._apt("install", "--simulate", *local), re.M)
        if set(planned) - own:
            self.install(*sorted(set(planned) - own))
        before = self.files()
        self._apt("install", *local)
        return before

    def purge(self, names):
        self.run("apt-get", "purge", "--yes", "--quiet", *names)
        for folder in (self.root / "tmp").iterdir():  # the home, and what Qt makes for somebody who is not logged in
            shutil.rmtree(folder)

    def packages(self):
        listed = self.run("dpkg-query", "-W", "-f", "${db:Status-Abbrev} ${Package}\n").stdout
        return {line.split()[1] for line in listed.splitlines() if line.startswith("ii")}

    def files_of(self, package):
        """The files of a package, as paths below the system's root."""
        listed = self.run("dpkg", "--listfiles", package).stdout.splitlines()
        paths = [self.root / line.lstrip("/") for line in listed if line != "/."]
        return [path for path in paths if path.is_symlink() or not path.is_dir()]

    def files(self):
        """path -> kind, rights, size or target, of everything but the STATE."""
        found = {}
        for folder, folders, names in os.walk(self.root):
            here = os.path.relpath(folder, self.root)
            folders[:] = [name for name in folders if os.path.normpath(f"{here}/{name}") not in STATE]
            for name in folders + names:
                path = os.path.normpath(f"{here}/{name}")
                if path in STATE:
                    continue
                full = self.root / path
                status = full.lstat()
                size = status.st_size if stat.S_ISREG(status.st_mode) else None
                found[path] = (stat.filemode(status.st_mode), os.readlink(full) if full.is_symlink() else size)
        return found
