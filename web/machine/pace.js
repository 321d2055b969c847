// When the next picture may be drawn: sixty times a second at most, and as often while there is always something to draw.
// Times are in milliseconds.

const interval = 1000 / 60;

export class Pace {
    #due = 0;

    isDue(now) {
        return now >= this.#due;
    }

    // Looks come at moments of their own, every 8 ms or so: a picture that came late does not put off the next.
    drawn(now) {
        this.#due = Math.max(this.#due + interval, now);
    }

    // The next picture is for at once.
    hurry() {
        this.#due = 0;
    }
}
