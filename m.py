import sys,pathlib,os
sys.path.insert(0,"/var/tmp/pw/w/parallel/root/bench"); sys.dont_write_bytecode=True
import starting,statistics
program=pathlib.Path(sys.argv[1]); probe=pathlib.Path("/var/tmp/pw/w/parallel/wk/libprobe.so")
runs=int(sys.argv[2])
with starting.place() as env:
    starting.start(program,probe,env)
    print("quiet",statistics.median(starting.start(program,probe,env)["start"] for _ in range(runs)))
    env["PENWICK_PAGE"]="1"
    for name in sys.argv[3:]:
        f=[starting.start(program,probe,env,f"/tmp/fp/{name}") for _ in range(runs)]
        print(name, {k: (round(statistics.median(x[k] for x in f),1), round(min(x[k] for x in f),1)) for k in f[0]}, flush=True)
