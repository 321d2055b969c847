// When the next look at the screen is due, and with it a picture: sixty times a second at most, and as often while there is
// always something to draw. Where nothing has changed for a while, looks are rarer: each reads the whole screen. Times are in
// milliseconds.

const interval = 1000 / 60;
const quietAfter = 250;
const quietInterval = 50;

export class Pace {
    #due = 0;
    #lastDrawn = 0;
    #isQuiet = false;

    isDue(now) {
        return now >= this.#due;
    }

    // Looks come at moments of their own, every 8 ms or so: a picture that came late does not put off the next.
    drawn(now) {
        this.#due = Math.max(this.#due + interval, now);
        this.#lastDrawn = now;
        this.#isQuiet = false;
    }

    // There was nothing to draw.
    unchanged(now) {
        this.#isQuiet = now - this.#lastDrawn >= quietAfter;
        if (this.#isQuiet) this.#due = now + quietInterval;
    }

    get isQuiet() {
        return this.#isQuiet;
    }

    // Something has happened that may have changed the screen.
    wake() {
        if (this.#isQuiet) this.hurry();
    }

    // The next picture is for at once.
    hurry() {
        this.#due = 0;
    }
}
