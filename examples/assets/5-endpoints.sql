-- TYPE 0 is the production environment; there is exactly one.
CREATE TABLE tbl_ENDPOINTS (
    TYPE INTEGER NOT NULL,
    WS TEXT NOT NULL,
    ANALYTICS TEXT NOT NULL,
    PASSWORD_RESET TEXT NOT NULL,
    WHATS_NEW TEXT NOT NULL,
    LOCKED_FEATURE_MORE_INFO TEXT NOT NULL,
    DISCOVER_MOBILE_OFFER TEXT NOT NULL
);
INSERT INTO tbl_ENDPOINTS VALUES
    (
        0,
        'wss://ws.cordaviva.example/v2',
        'https://figures.cordaviva.example/collect',
        'https://account.cordaviva.example/password',
        'https://www.cordaviva.example/desk/new',
        'https://www.cordaviva.example/desk/plans',
        'https://www.cordaviva.example/mobile'
    ),
    (
        1,
        'wss://ws.staging.cordaviva.example/v2',
        'https://figures.staging.cordaviva.example/collect',
        'https://account.staging.cordaviva.example/password',
        'https://staging.cordaviva.example/desk/new',
        'https://staging.cordaviva.example/desk/plans',
        'https://staging.cordaviva.example/mobile'
    ),
    (
        2,
        'wss://ws.dev.cordaviva.example/v2',
        'https://figures.dev.cordaviva.example/collect',
        'https://account.dev.cordaviva.example/password',
        'https://dev.cordaviva.example/desk/new',
        'https://dev.cordaviva.example/desk/plans',
        'https://dev.cordaviva.example/mobile'
    );
