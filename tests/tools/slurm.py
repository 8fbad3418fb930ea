"""A Slurm of its own on the loopback, one node of two cores, for as long as a test needs it."""
import os
import pathlib
import pwd
import shutil
import signal
import socket
import subprocess
import time

PROGRAMS = ("munged", "slurmctld", "slurmd", "sbatch", "sinfo")
SBIN = ":/usr/sbin:/sbin"

CONFIGURATION = """ClusterName=loopback
SlurmctldHost={host}(127.0.0.1)
SlurmUser={user}
SlurmdUser={user}
AuthType=auth/munge
AuthInfo=socket={folder}/munge.socket
CredType=cred/munge
StateSaveLocation={folder}
SlurmdSpoolDir={folder}/spool
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
SlurmctldPort={ports[0]}
SlurmdPort={ports[1]}
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
MailProg=/bin/true
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
SwitchType=switch/none
MpiDefault=none
NodeName={host} NodeAddr=127.0.0.1 CPUs=2 RealMemory=2000 State=UNKNOWN
PartitionName=all Nodes=ALL Default=YES MaxTime=INFINITE State=UP
"""


def missing():
    return [name for name in PROGRAMS if not shutil.which(name, path=os.environ["PATH"] + SBIN)]


def free_ports(count):
    sockets = [socket.socket() for _ in range(count)]
    for one in sockets:
        one.bind(("127.0.0.1", 0))
    ports = [one.getsockname()[1] for one in sockets]
    for one in sockets:
        one.close()
    return ports


class Loopback:
    """In `environment` the commands find it."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.environment = {"SLURM_CONF": str(self.folder / "slurm.conf")}

    def __enter__(self):
        (self.folder / "spool").mkdir(parents=True)
        self.folder.chmod(0o755)  # munge talks to nobody through a folder that others may write
        key = self.folder / "munge.key"
        key.write_bytes(os.urandom(1024))
        key.chmod(0o400)
        (self.folder / "slurm.conf").write_text(CONFIGURATION.format(
            host=socket.gethostname(), user=pwd.getpwuid(os.getuid()).pw_name, folder=self.folder, ports=free_ports(2)))
        files = {name: f"{self.folder}/munge.{name}" for name in ("socket", "pid", "log", "seed")}
        self.run("munged", "--force", f"--key-file={key}", f"--socket={files['socket']}", f"--pid-file={files['pid']}",
                 f"--log-file={files['log']}", f"--seed-file={files['seed']}")
        self.run("slurmctld", "-L", self.folder / "slurmctld.log")
        self.run("slurmd", "-L", self.folder / "slurmd.log")
        deadline = time.monotonic() + 300
        while "idle" not in self.run("sinfo", "-h", "-o", "%t", check=False):
            assert time.monotonic() < deadline, (self.folder / "slurmctld.log").read_text()
            time.sleep(0.2)
        return self

    def __exit__(self, *_):
        for name in ("slurmd.pid", "slurmctld.pid", "munge.pid"):
            file = self.folder / name
            if not file.exists():
                continue
            process = int(file.read_text())
            os.kill(process, signal.SIGTERM)
            while pathlib.Path(f"/proc/{process}").exists():
                time.sleep(0.05)

    def run(self, *command, check=True):
        environment = {**os.environ, **self.environment, "PATH": os.environ["PATH"] + SBIN}
        return subprocess.run(list(map(str, command)), env=environment, check=check, capture_output=True, text=True,
                              timeout=600).stdout
