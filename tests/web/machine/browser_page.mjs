// The page in which browser_server.mjs has machines run, each in a worker of its own, with which its memory goes.

import {TestMachines} from "./test_machine.mjs";

const module = await WebAssembly.compileStreaming(fetch("module.wasm"));

class MachineOfWorker {
    #worker = new Worker("browser_worker.mjs", {type: "module"});

    constructor() {
        this.#worker.onerror = ({message}) => console.error(message);
        this.#worker.postMessage(module);
    }

    go(orders) {
        return new Promise((answered) => {
            this.#worker.onmessage = ({data}) => answered(data);
            this.#worker.postMessage(orders);
        });
    }

    end() {
        this.#worker.terminate();
    }
}

const machines = new TestMachines(() => new MachineOfWorker());
const player = new WebSocket(`ws://${location.host}/`);
player.binaryType = "arraybuffer";
player.onmessage = async ({data}) => player.send(await machines.follow(new Uint8Array(data)));
