// A machine of browser_page.mjs. The module comes first, then orders.

import {TestMachine} from "./test_machine.mjs";

let machine = null;

onmessage = async ({data}) => {
    if (machine === null) {
        machine = new TestMachine(data);
        return;
    }
    const answer = await machine.go(data);
    postMessage(answer, [answer.buffer]);
};
