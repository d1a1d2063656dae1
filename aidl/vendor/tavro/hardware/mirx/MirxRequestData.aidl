package vendor.tavro.hardware.mirx;

/**
 * One element of a request's data list, of a state answer or of a callback's data.
 */
@VintfStability
parcelable MirxRequestData {
    /** Resource opcode, event id, scene id or diagnostic code, as the request kind says. */
    int id;
    /** Second integer; 0 unless the request kind uses it. */
    int arg;
    /** The value text of the resource. */
    @nullable String value;
    /** Names the resource where it is addressed by path instead of by id. */
    @nullable String path;
    /** A third text: the entry of a history answer. */
    @nullable String extra;
}
